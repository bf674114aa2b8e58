// A controller's port test run on the device's outer-line test.
//
// The outer-line test measures what all five selectors need (voltages to ground, insulation
// resistances, the ringer load) and the voice module concludes on the line as a whole.  A test
// fails when a measurement it looks at is outside the limits the selector's definition gives,
// or when the voice module's conclusion names a fault of its kind; "Abnormal" (a fault code
// this library does not know) fails every test.
#include "fxs_diag.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tr104/linetest.h"

namespace tr104usp {
namespace {

using Handler = int (*)(int, void *, int *);

enum class Fails : unsigned char { AboveMagnitude, Below, Above };

struct Limit {
    Handler read;
    const char *name;
    Fails when;
    int limit;
};

struct DiagRule {
    const char *selector;
    Limit limits[4];
    const char *conclusions[5];
};

// Volts, kilohms and ringer equivalents as the measurement handlers give them.
const DiagRule kRules[] = {
    {"Hazard Potential",
     {{Tr104PhysicalInterfaceTestAGACVoltage, "A-ground AC voltage", Fails::AboveMagnitude, 50},
      {Tr104PhysicalInterfaceTestBGACVoltage, "B-ground AC voltage", Fails::AboveMagnitude, 50},
      {Tr104PhysicalInterfaceTestAGDCVoltage, "A-ground DC voltage", Fails::AboveMagnitude, 135},
      {Tr104PhysicalInterfaceTestBGDCVoltage, "B-ground DC voltage", Fails::AboveMagnitude, 135}},
     {"PowerLineContacted"}},
    {"Foreign Voltage",
     {{Tr104PhysicalInterfaceTestAGACVoltage, "A-ground AC voltage", Fails::AboveMagnitude, 10},
      {Tr104PhysicalInterfaceTestBGACVoltage, "B-ground AC voltage", Fails::AboveMagnitude, 10},
      {Tr104PhysicalInterfaceTestAGDCVoltage, "A-ground DC voltage", Fails::AboveMagnitude, 6},
      {Tr104PhysicalInterfaceTestBGDCVoltage, "B-ground DC voltage", Fails::AboveMagnitude, 6}},
     {"PowerLineContacted"}},
    {"Resistive Faults",
     {{Tr104PhysicalInterfaceTestABInsulationResistance, "A-B insulation resistance", Fails::Below, 150},
      {Tr104PhysicalInterfaceTestAGInsulationResistance, "A-ground insulation resistance", Fails::Below, 150},
      {Tr104PhysicalInterfaceTestBGInsulationResistance, "B-ground insulation resistance", Fails::Below, 150}},
     {"ABLinePoorInsulation", "BothLoopLineMixOther", "BothLineGrouding", "BothLineLeakageToGround", "ShortCircuit"}},
    {"Off-hook", {}, {"PhoneOffhook"}},
    {"REN",
     {{Tr104PhysicalInterfaceTestRingerEquivalence, "ringer equivalence", Fails::Above, 5}},
     {"PhoneDisconnect"}},
};

const DiagRule *ruleOf(const char *selector) {
    for (const DiagRule &rule : kRules) {
        if (selector != nullptr && std::strcmp(rule.selector, selector) == 0) {
            return &rule;
        }
    }
    return nullptr;
}

bool outside(const Limit &l, int value) {
    switch (l.when) {
    case Fails::AboveMagnitude: return std::abs(static_cast<long>(value)) > l.limit;
    case Fails::Below: return value < l.limit;
    case Fails::Above: return value > l.limit;
    }
    return true;
}

DiagOutcome outcome(const char *status, const char *result, const char *detail) {
    DiagOutcome o{status, result, {}};
    std::snprintf(o.detail, sizeof(o.detail), "%s", detail);
    return o;
}

// The verdict on a finished test.
DiagOutcome judge(const DiagRule &rule, int *locate) {
    char conclusion[TR104_LINETEST_TEXT_LEN] = {};
    if (Tr104PhysicalInterfaceTestConclusion(0, conclusion, locate) != 0) {
        return outcome("Error_Internal", nullptr, "the conclusion could not be read");
    }
    char detail[sizeof(DiagOutcome::detail)];
    for (const Limit &l : rule.limits) {
        if (l.read == nullptr) {
            break;
        }
        int value = 0;
        if (l.read(0, &value, locate) != 0) {
            std::snprintf(detail, sizeof(detail), "the %s could not be read", l.name);
            return outcome("Error_Internal", nullptr, detail);
        }
        if (outside(l, value)) {
            std::snprintf(detail, sizeof(detail), "%s %d outside the limit %d (conclusion %s)", l.name, value, l.limit,
                          conclusion);
            return outcome("Complete", "Failure", detail);
        }
    }
    bool named = std::strcmp(conclusion, "Abnormal") == 0;
    for (const char *fault : rule.conclusions) {
        named = named || (fault != nullptr && std::strcmp(fault, conclusion) == 0);
    }
    std::snprintf(detail, sizeof(detail), "conclusion %s", conclusion);
    return outcome("Complete", named ? "Failure" : "Success", detail);
}

}  // namespace

bool diagSelectorKnown(const char *selector) { return ruleOf(selector) != nullptr; }

DiagOutcome runFxsDiag(int port, const char *selector, const std::atomic<bool> &stop, int pollMs, int timeoutMs) {
    const DiagRule *rule = ruleOf(selector);
    if (rule == nullptr) {
        return outcome("Error_Other", nullptr, "unknown test selector");
    }
    int locate[4] = {1, port, 0, 0};
    char text[TR104_LINETEST_TEXT_LEN] = "Outer_Line_Test";
    if (Tr104PhysicalInterfaceTestSelector(1, text, locate) != 0) {
        return outcome("Error_Internal", nullptr, "the test could not be selected");
    }
    std::snprintf(text, sizeof(text), "Requested");
    if (Tr104PhysicalInterfaceTestState(1, text, locate) != 0) {
        return outcome("Error_Internal", nullptr, "the voice module did not start the test");
    }
    for (int waited = 0;; waited += pollMs) {
        if (stop.load()) {
            return outcome("Canceled", nullptr, "the agent stopped");
        }
        if (waited >= timeoutMs) {
            return outcome("Error_Internal", nullptr, "the test did not finish in time");
        }
        usleep(static_cast<useconds_t>(pollMs) * 1000u);
        std::memset(text, 0, sizeof(text));
        if (Tr104PhysicalInterfaceTestState(0, text, locate) != 0) {
            return outcome("Error_Internal", nullptr, "the test state could not be read");
        }
        if (std::strcmp(text, "Complete") == 0) {
            return judge(*rule, locate);
        }
        if (std::strcmp(text, "Testing") != 0) {
            return outcome("Error_Other", nullptr, text);
        }
    }
}

}  // namespace tr104usp
