#include "private_root.h"

#include <dirent.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace tr104test {

std::string PrivateRootEnvironment::binDir_;

namespace {

constexpr const char *kUxcfg = "/uxcfg";

[[noreturn]] void fatal(const char *what) {
    std::fprintf(stderr, "FATAL: %s: %s (the protocol tests need root or CAP_SYS_ADMIN)\n", what,
                 std::strerror(errno));
    std::exit(2);
}

std::string logPath(const std::string &binDir) { return binDir + "/reboot.log"; }

}  // namespace

void PrivateRootEnvironment::SetUp() {
    // Mounts made from here on are seen by this process only, and never reach the machine.
    if (unshare(CLONE_NEWNS) != 0) {
        fatal("unshare(CLONE_NEWNS)");
    }
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        fatal("making / private");
    }
    // The directory is only a mount point: nothing is written into the machine's own.
    if (mkdir(kUxcfg, 0755) != 0 && errno != EEXIST) {
        fatal("mkdir /uxcfg");
    }
    if (mount("tr104-test-uxcfg", kUxcfg, "tmpfs", 0, "size=1m,mode=0755") != 0) {
        fatal("mounting a tmpfs on /uxcfg");
    }

    char dir[] = "/tmp/tr104-fake-bin.XXXXXX";
    if (mkdtemp(dir) == nullptr) {
        fatal("mkdtemp");
    }
    binDir_ = dir;
    writeFile(binDir_ + "/reboot", "#!/bin/sh\necho \"reboot $*\" >> '" + logPath(binDir_) + "'\n");
    chmod((binDir_ + "/reboot").c_str(), 0755);
    const char *path = std::getenv("PATH");
    setenv("PATH", (binDir_ + ":" + (path != nullptr ? path : "/usr/bin:/bin")).c_str(), 1);
}

void PrivateRootEnvironment::TearDown() {
    unlink(logPath(binDir_).c_str());
    unlink((binDir_ + "/reboot").c_str());
    rmdir(binDir_.c_str());
}

int PrivateRootEnvironment::rebootCount() {
    std::istringstream log(readFile(logPath(binDir_)));
    int count = 0;
    for (std::string line; std::getline(log, line);) {
        count += line.rfind("reboot", 0) == 0 ? 1 : 0;
    }
    return count;
}

void PrivateRootEnvironment::resetRebootCount() { unlink(logPath(binDir_).c_str()); }

void clearUxcfg() {
    DIR *dir = opendir(kUxcfg);
    if (dir == nullptr) {
        return;
    }
    while (dirent *entry = readdir(dir)) {
        if (entry->d_name[0] != '.') {
            unlink((std::string(kUxcfg) + "/" + entry->d_name).c_str());
        }
    }
    closedir(dir);
}

std::string readFile(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

bool fileExists(const std::string &path) { return access(path.c_str(), F_OK) == 0; }

void writeFile(const std::string &path, const std::string &content) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
}

}  // namespace tr104test
