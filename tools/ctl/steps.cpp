// The demo's scripted calls and the settings tables' rows.
#include "ctl/steps.h"

#include <string>

#include "ctl/invoke.h"

namespace tr104ctl {
int runSteps(const Library &lib, const DemoStep *steps, size_t count) {
    int problems = 0;
    for (size_t i = 0; i < count; ++i) {
        const DemoStep &s = steps[i];
        CallRequest req;
        req.handler = s.handler;
        req.set = s.set;
        req.value = s.value != nullptr ? s.value : "";
        req.locate[2] = s.line;
        char what[160];
        char where[24] = "";
        if (s.line != 0) {
            std::snprintf(where, sizeof(where), " line %d", s.line);
        }
        if (s.set) {
            std::snprintf(what, sizeof(what), "set %s%s = \"%s\"", s.handler, where, req.value.c_str());
        } else {
            std::snprintf(what, sizeof(what), "get %s%s", s.handler, where);
        }
        const CallResult r = callHandler(lib, req);
        std::string outcome;
        if (!r.called) {
            outcome = "skipped: " + r.message;
            ++problems;
        } else if (r.rc != 0) {
            outcome = "-> " + std::to_string(r.rc);
        } else {
            outcome = s.set ? "-> 0" : "-> 0, \"" + r.shown + "\"";
        }
        std::printf("  %-58s %s%s%s\n", what, outcome.c_str(), s.note[0] ? "   # " : "", s.note);
        std::fflush(stdout);
    }
    return problems;
}

int printValue(const Library &lib, const char *handler, int line, const char *label, const char *unit, int width) {
    CallRequest req;
    req.handler = handler;
    req.locate[2] = line;
    const CallResult r = callHandler(lib, req);
    std::string shown;
    if (!r.called) {
        shown = "(" + r.message + ")";
    } else if (r.rc != 0) {
        shown = "(not available: " + std::to_string(r.rc) + ")";
    } else {
        shown = (r.shown.empty() ? "\"\"" : r.shown) + (unit[0] ? std::string(" ") + unit : "");
    }
    std::printf("  %-*s %s\n", width, label, shown.c_str());
    return r.called && r.rc == 0 ? 0 : 1;
}

}  // namespace tr104ctl
