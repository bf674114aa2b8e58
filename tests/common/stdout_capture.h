// Runs a callable and returns what it printed on standard output.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace tr104test {

template <typename F>
std::string capturedStdout(F &&f) {
    std::fflush(stdout);
    testing::internal::CaptureStdout();
    f();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

}  // namespace tr104test
