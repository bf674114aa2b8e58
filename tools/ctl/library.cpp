// libtr104.so opened with dlopen, as the management agent opens it.
#include "ctl/library.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

namespace tr104ctl {

namespace {

std::string executableDir() {
    char buf[PATH_MAX];
    const ssize_t len = readlink("/proc/self/exe", buf, sizeof(buf) - 1);
    if (len <= 0) {
        return "";
    }
    std::string exe(buf, static_cast<size_t>(len));
    const size_t slash = exe.rfind('/');
    return slash == std::string::npos ? "" : exe.substr(0, slash);
}

}  // namespace

bool Library::open(const std::string &explicitPath, std::string *error) {
    std::vector<std::string> candidates;
    if (!explicitPath.empty()) {
        candidates.push_back(explicitPath);
    } else if (const char *env = getenv("TR104_LIBRARY"); env != nullptr && env[0] != '\0') {
        candidates.push_back(env);
    } else {
        const std::string dir = executableDir();
        if (!dir.empty()) {
            candidates.push_back(dir + "/libtr104.so");
            candidates.push_back(dir + "/../tr104/libtr104.so");
            candidates.push_back(dir + "/../lib/libtr104.so");
#ifdef TR104_INSTALL_LIBDIR_FROM_BIN
            // An installed client: the runtime's library (its SONAME) in the tree's libdir.
            candidates.push_back(dir + "/" TR104_INSTALL_LIBDIR_FROM_BIN "/" TR104_SONAME);
#endif
        }
#ifdef TR104_SONAME
        candidates.push_back(TR104_SONAME);
#endif
        candidates.push_back("libtr104.so");
    }
    std::string tried;
    for (const std::string &path : candidates) {
        const bool lastChance = &path == &candidates.back();
        // Paths that do not exist are skipped quietly; the loader's search comes last.
        if (!lastChance && path.find('/') != std::string::npos && access(path.c_str(), F_OK) != 0) {
            continue;
        }
        handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
        if (handle_ != nullptr) {
            path_ = path;
            return true;
        }
        tried += std::string("\n  ") + dlerror();
    }
    *error = "cannot load libtr104.so (give --lib PATH or set TR104_LIBRARY):" + tried;
    return false;
}

}  // namespace tr104ctl
