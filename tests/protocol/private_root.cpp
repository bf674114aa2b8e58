#include "private_root.h"

#include <dirent.h>
#include <fcntl.h>
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
    std::fprintf(stderr, "FATAL: %s: %s (the protocol tests need root or CAP_SYS_ADMIN)\n", what, std::strerror(errno));
    std::exit(2);
}

std::string logPath(const std::string &binDir) { return binDir + "/reboot.log"; }

// Builds a root on a tmpfs that holds every top-level entry of the machine's root (directories
// bound recursively, symbolic links copied, plain files bound) plus an empty /uxcfg, and moves
// this process into it.  The tmpfs sits on /mnt, which this private mount namespace may hide:
// nothing is created on the machine.
void enterRootWithUxcfg() {
    constexpr const char *kBase = "/mnt";
    char cwd[4096];
    if (getcwd(cwd, sizeof(cwd)) == nullptr) {
        fatal("getcwd");
    }
    if (mount("tr104-test-root", kBase, "tmpfs", 0, "size=1m,mode=0755") != 0) {
        fatal("mounting a tmpfs for a private root");
    }
    // The machine's root is read through /proc/self/root: under qemu-user a plain "/" may be
    // redirected into the emulated system's sysroot.
    constexpr const char *kMachineRoot = "/proc/self/root";
    DIR *root = opendir(kMachineRoot);
    if (root == nullptr) {
        fatal("opendir /proc/self/root");
    }
    // 64-bit entries: on a 32-bit target the plain call fails on the large directory offsets
    // of a real disk file system.
    while (dirent64 *entry = readdir64(root)) {
        const std::string name = entry->d_name;
        if (name == "." || name == ".." || name == "mnt") {
            continue;
        }
        const std::string from = std::string(kMachineRoot) + "/" + name;
        const std::string to = std::string(kBase) + "/" + name;
        struct stat64 st {};
        if (lstat64(from.c_str(), &st) != 0) {
            continue;
        }
        if (S_ISLNK(st.st_mode)) {
            char target[4096];
            const ssize_t n = readlink(from.c_str(), target, sizeof(target) - 1);
            if (n < 0) {
                continue;
            }
            target[n] = 0;
            if (symlink(target, to.c_str()) != 0) {
                fatal("copying a symbolic link into the private root");
            }
            continue;
        }
        if (S_ISDIR(st.st_mode)) {
            mkdir(to.c_str(), st.st_mode & 07777);
        } else if (S_ISREG(st.st_mode)) {
            close(open(to.c_str(), O_CREAT | O_WRONLY, 0644));
        } else {
            continue;
        }
        if (mount(from.c_str(), to.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0) {
            fatal(("binding " + from + " into the private root").c_str());
        }
    }
    closedir(root);
    if (mkdir((std::string(kBase) + "/mnt").c_str(), 0755) != 0 ||
        mkdir((std::string(kBase) + kUxcfg).c_str(), 0755) != 0) {
        fatal("preparing the private root");
    }
    if (chdir(kBase) != 0) {
        fatal("chdir to the private root");
    }
    if (chroot(".") != 0) {
        fatal("chroot to the private root");
    }
    if (chdir(cwd) != 0) {
        fatal(cwd);
    }
}

}  // namespace

void PrivateRootEnvironment::SetUp() {
    // Mounts made from here on are seen by this process only, and never reach the machine.
    if (unshare(CLONE_NEWNS) != 0) {
        fatal("unshare(CLONE_NEWNS)");
    }
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        fatal("making / private");
    }
    if (access(kUxcfg, F_OK) != 0) {
        // This machine has no /uxcfg, and the tests must not create one on it: give this
        // process a root of its own that has one (see enterRootWithUxcfg).
        enterRootWithUxcfg();
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
