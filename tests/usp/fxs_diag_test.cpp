// A controller's port tests (DiagTests()) run on the emulated voice module's outer-line test.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "emulator/linetest_emulator.h"
#include "fxs_diag.h"
#include "support/channel_fixture.h"
#include "tr104/linetest.h"

namespace {

using namespace std::chrono_literals;
namespace lt = vmemu::linetest;

class FxsDiag : public tr104test::ChannelTest {
protected:
    void SetUp() override {
        ChannelTest::SetUp();
        for (int i = 0; i < TR104_LINETEST_PORTS; ++i) {
            std::memset(gTestSelector[i], 0, sizeof(gTestSelector[i]));
            std::strcpy(gTestState[i], "None");
            gTestProgess[i] = 0;
        }
        lt::setTestDuration(emulator, 20ms);
    }
    tr104usp::DiagOutcome run(int port, const char *selector, int timeoutMs = 5000) {
        return tr104usp::runFxsDiag(port, selector, stop, 10, timeoutMs);
    }
    static std::string resultOf(const tr104usp::DiagOutcome &o) {
        return std::string(o.status) + "/" + (o.result != nullptr ? o.result : "-");
    }
    std::atomic<bool> stop{false};
};

// Each test passes on a healthy line and fails on the fault of its own kind only: a measurement
// past the limit its definition gives, or the voice module's conclusion naming it.
TEST_F(FxsDiag, EachSelectorJudgesItsOwnFaults) {
    struct Fault {
        const char *what;
        const char *field;  // a measurement set on the port, or nullptr
        const char *value;
        uint8_t conclusion;  // 0 Normal
        std::vector<std::string> failing;  // the selectors that fail on it
    };
    const std::vector<std::string> all(std::begin(tr104usp::kDiagSelectors), std::end(tr104usp::kDiagSelectors));
    const Fault faults[] = {
        {"healthy line", nullptr, nullptr, 0, {}},
        {"AC 60 V on A", "aGroundACVoltage", "60", 0, {"Hazard Potential", "Foreign Voltage"}},
        {"AC -50 V on B: at the hazard limit", "bGroundACVoltage", "-50", 0, {"Foreign Voltage"}},
        {"DC -140 V on B", "bGroundDCVoltage", "-140", 0, {"Hazard Potential", "Foreign Voltage"}},
        {"DC 7 V on A", "aGroundDCVoltage", "7", 0, {"Foreign Voltage"}},
        {"DC 6 V on A: at the foreign limit", "aGroundDCVoltage", "6", 0, {}},
        {"A-B insulation 149 kohm", "abInsulationResistance", "149", 0, {"Resistive Faults"}},
        {"B-ground insulation 150 kohm", "bGroundInsulationResistance", "150", 0, {}},
        {"REN 6", "ringerEquivalentNumber", "6", 0, {"REN"}},
        {"power line contacted", nullptr, nullptr, '5', {"Hazard Potential", "Foreign Voltage"}},
        {"short circuit", nullptr, nullptr, '8', {"Resistive Faults"}},
        {"both lines grounded", nullptr, nullptr, '4', {"Resistive Faults"}},
        {"phone off hook", nullptr, nullptr, '7', {"Off-hook"}},
        {"phone disconnected", nullptr, nullptr, '2', {"REN"}},
        {"a fault code nobody knows", nullptr, nullptr, '9', all},
    };
    const std::vector<std::string> healthy = {"0", "0", "1", "-2", "20000", "19000", "15000", "2"};
    const char *fields[] = {"aGroundACVoltage",
                            "bGroundACVoltage",
                            "aGroundDCVoltage",
                            "bGroundDCVoltage",
                            "aGroundInsulationResistance",
                            "bGroundInsulationResistance",
                            "abInsulationResistance",
                            "ringerEquivalentNumber"};
    for (const Fault &f : faults) {
        for (size_t i = 0; i < healthy.size(); ++i) {
            ASSERT_TRUE(lt::setMeasurement(emulator, 2, fields[i], healthy[i]));
        }
        if (f.field != nullptr) {
            ASSERT_TRUE(lt::setMeasurement(emulator, 2, f.field, f.value));
        }
        lt::setConclusion(emulator, 2, f.conclusion);
        for (const std::string &selector : all) {
            const bool fails = std::find(f.failing.begin(), f.failing.end(), selector) != f.failing.end();
            const tr104usp::DiagOutcome o = run(2, selector.c_str());
            EXPECT_EQ(resultOf(o), fails ? "Complete/Failure" : "Complete/Success")
                << f.what << ", " << selector << ": " << o.detail;
        }
    }
    EXPECT_EQ(lt::lastTestType(emulator, 2), TR104_TEST_TYPE_OUTER);
    EXPECT_EQ(lt::testsStarted(emulator, 1), 0) << "the other port is left alone";
}

// A test that cannot be run, or is not answered, ends with an error status and no result.
TEST_F(FxsDiag, TestsThatDoNotCompleteGiveNoResult) {
    EXPECT_EQ(resultOf(run(1, "Ground")), "Error_Other/-");
    EXPECT_EQ(lt::testsStarted(emulator, 1), 0) << "an unknown selector starts nothing";

    lt::setNotSupported(emulator, 1, true);
    EXPECT_EQ(resultOf(run(1, "REN")), "Error_Other/-");
    lt::setNotSupported(emulator, 1, false);

    lt::setTestDuration(emulator, 10s);
    EXPECT_EQ(resultOf(run(1, "REN", 200)), "Error_Internal/-");
    std::thread stopper([this] {
        std::this_thread::sleep_for(50ms);
        stop = true;
    });
    EXPECT_EQ(resultOf(run(1, "Off-hook")), "Canceled/-");
    stopper.join();

    stop = false;
    emulator.setFault(GET_PORT_TEST_STATE_ID, vmemu::FaultSpec{vmemu::Fault::FailureMarker});
    const tr104usp::DiagOutcome o = run(1, "REN");
    EXPECT_EQ(resultOf(o), "Error_Internal/-");
    EXPECT_STREQ(o.detail, "the test state could not be read");
}

}  // namespace
