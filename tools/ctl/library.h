// libtr104.so opened with dlopen, as the management agent opens it, and its names looked up at
// run time.
#pragma once

#include <dlfcn.h>

#include <string>

namespace tr104ctl {

class Library {
public:
    Library() = default;
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;

    // Opens the library: the given path, else $TR104_LIBRARY, else beside the executable (and
    // in the build tree's tr104/ folder, or in an installed tree's libdir), else wherever the
    // dynamic loader finds it (by its SONAME, which the runtime package installs, then by name).
    bool open(const std::string &explicitPath, std::string *error);

    void *symbol(const std::string &name) const { return handle_ ? dlsym(handle_, name.c_str()) : nullptr; }

    template <typename T>
    T function(const std::string &name) const {
        return reinterpret_cast<T>(symbol(name));
    }
    template <typename T>
    T *variable(const std::string &name) const {
        return static_cast<T *>(symbol(name));
    }

    const std::string &path() const { return path_; }

private:
    void *handle_ = nullptr;
    std::string path_;
};

}  // namespace tr104ctl
