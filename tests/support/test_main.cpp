// main() of every test binary: private IPC namespace first, then GoogleTest.
#include <gtest/gtest.h>

#include "support/test_env.h"

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    tr104test::enterPrivateIpcNamespace();
    return RUN_ALL_TESTS();
}
