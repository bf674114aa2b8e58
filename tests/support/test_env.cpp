#include "support/test_env.h"

#include <sched.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tr104test {

void enterPrivateIpcNamespace() {
    if (unshare(CLONE_NEWIPC) != 0) {
        std::fprintf(stderr,
                     "FATAL: unshare(CLONE_NEWIPC) failed: %s.\n"
                     "The tests use the channel's fixed queue and semaphore keys and must run in a private "
                     "IPC namespace: run them as root or with CAP_SYS_ADMIN.\n",
                     std::strerror(errno));
        std::exit(2);
    }
}

}  // namespace tr104test
