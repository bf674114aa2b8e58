#include "fuzz_support.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "support/test_env.h"

namespace tr104fuzz {

void setUp() {
    tr104test::enterPrivateIpcNamespace();
    if (std::getenv("TR104_FUZZ_VERBOSE") == nullptr) {
        std::fflush(stdout);
        const int null = open("/dev/null", O_WRONLY);
        if (null >= 0) {
            dup2(null, STDOUT_FILENO);
            close(null);
        }
    }
}

}  // namespace tr104fuzz
