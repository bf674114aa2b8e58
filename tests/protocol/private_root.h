// A private view of the machine for tests that write the protocol file and restart the device:
// "/uxcfg" is a tmpfs seen only by this process, and "reboot" on PATH is a script that records
// its call instead of restarting anything.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace tr104test {

class PrivateRootEnvironment : public ::testing::Environment {
public:
    void SetUp() override;
    void TearDown() override;

    // Times the fake reboot ran since the last reset.
    static int rebootCount();
    static void resetRebootCount();

private:
    static std::string binDir_;
};

// Removes every file of the private /uxcfg.
void clearUxcfg();
// Whole content of a file ("" when it cannot be read), and whether it exists.
std::string readFile(const std::string &path);
bool fileExists(const std::string &path);
void writeFile(const std::string &path, const std::string &content);

}  // namespace tr104test
