// Every exported handler of libtr104 with its calling convention, for the robustness tests.
//
// The names come from the library's export list (cmake/exports.txt, read at run time); an
// exported name is a handler when the client knows how to call it (tools/ctl/kinds.h):
// the data-model map gives the arity, the value and the instance numbers of one parameter, the
// client's own rows the few handlers that take something else.
#pragma once

#include <dlfcn.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "ctl/kinds.h"
#include "robust/guarded_buffer.h"
#include "tr104/map.h"

namespace robust {

enum class Shape {
    Three,  // (nFlag, pValue, nLocate)
    Two,  // (nFlag, pValue)
    None,  // ()
    Directed,  // (nFlag, nDirection, pValue, nLocate)
    Custom,  // several value pointers: called through the client's own call
};

struct Target {
    std::string name;
    void *fn = nullptr;
    Shape shape = Shape::Three;
    size_t size = sizeof(int);  // bytes of the value buffer the agent passes
    bool text = false;
    std::vector<int> instanceIndexes;  // nLocate indexes the parameter's path names
    std::array<int, 4> locate{1, 1, 1, 1};
    tr104ctl::CustomCall custom = nullptr;
};

inline const Tr104MapEntry *mapEntryOf(const std::string &name) {
    const std::string base = tr104ctl::baseName(name);
    for (unsigned i = 0; i < gTr104MapCount; ++i) {
        const Tr104MapEntry &e = gTr104Map[i];
        if (e.handler != nullptr && (name == e.handler || base == e.handler)) {
            return &e;
        }
    }
    return nullptr;
}

inline Target describe(const std::string &name, void *fn, const tr104ctl::HandlerKind &kind) {
    Target t;
    t.name = name;
    t.fn = fn;
    const Tr104MapEntry *e = mapEntryOf(name);
    if (e != nullptr) {
        for (int k = 0; k < e->instances && k < 4; ++k) {
            if (e->locate[k] >= 0) {
                t.instanceIndexes.push_back(e->locate[k]);
            }
        }
        int index = 0;
        int value = 0;
        if (std::sscanf(e->arg, "nLocate[%d]=%d", &index, &value) == 2 && index >= 0 && index < 4) {
            t.locate[index] = value;
        }
    }
    using namespace tr104ctl;
    switch (kind.convention) {
    case Convention::Value:
        t.shape = kind.arity == 2 ? Shape::Two : Shape::Three;
        t.text = kind.valueKind == TR104_MAP_VALUE_TEXT;
        t.size = e != nullptr ? e->valueSize : kind.valueSize;
        break;
    case Convention::Directed: t.shape = Shape::Directed; break;
    case Convention::Custom:
        if (kind.custom == &device::led) {
            t.shape = Shape::None;
        } else {
            t.shape = Shape::Custom;
            t.custom = kind.custom;
        }
        break;
    }
    return t;
}

// The handlers among the names of the export list, resolved in this process.
inline std::vector<Target> exportedHandlers(const char *exportsFile) {
    std::vector<Target> out;
    std::ifstream in(exportsFile);
    for (std::string line; std::getline(in, line);) {
        line = line.substr(0, line.find('#'));
        line.erase(line.find_last_not_of(" \t\r") + 1);
        if (line.empty()) {
            continue;
        }
        const tr104ctl::HandlerKind *kind = tr104ctl::findKind(line);
        void *fn = kind != nullptr ? dlsym(RTLD_DEFAULT, line.c_str()) : nullptr;
        if (fn != nullptr) {
            out.push_back(describe(line, fn, *kind));
        }
    }
    return out;
}

}  // namespace robust
