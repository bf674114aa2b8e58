// The client's value conversion: tr104MapLookup with arbitrary paths (error text into a buffer
// of the input's chosen size), and the conversion of a value to the handler's form and of a
// handler's value to the data model's form, for any map entry and any text.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "ctl/paths.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    tr104fuzz::setUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    tr104fuzz::Input in(data, size);
    const unsigned errorLen = in.byte();
    const Tr104MapEntry &any = gTr104Map[in.word<uint16_t>() % gTr104MapCount];
    const std::string value = in.text(255);
    const std::string path = in.rest();

    const Tr104MapEntry *entry = nullptr;
    int locate[4] = {};
    std::vector<char> error(errorLen > 0 ? errorLen : 1);
    const int rc = tr104MapLookup(path.c_str(), &entry, locate, errorLen > 0 ? error.data() : nullptr, errorLen);
    if ((rc == TR104_MAP_SERVED || rc == TR104_MAP_NOT_SERVED) && entry == nullptr) {
        std::abort();  // a found path names its entry
    }
    if (errorLen > 0 && std::memchr(error.data(), 0, errorLen) == nullptr) {
        std::abort();  // the error line ends within its buffer
    }
    const tr104ctl::ResolvedPath resolved = tr104ctl::resolvePath(path);

    std::string out, why;
    const Tr104MapEntry &e = resolved.entry != nullptr ? *resolved.entry : any;
    if (tr104ctl::toHandlerValue(e, value, &out, &why)) {
        tr104ctl::toModelValue(e, out);
    }
    tr104ctl::toModelValue(any, value);
    return 0;
}
