// The map's path lookup and value conversion, as the client and the agent plug-ins use them:
// tr104MapLookup with arbitrary paths (error text into a buffer of the input's chosen size), and
// the conversion of a value to the handler's form and of a handler's value to the data model's
// form, for any map entry and any text.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "tr104/map.h"
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
    // The conversions write into buffers of the client's sizes: the value and 64 bytes more.
    const Tr104MapEntry &e = entry != nullptr ? *entry : any;
    std::vector<char> out(value.size() + 64, '\0'), shown(value.size() + 64 + 256, '\0');
    char why[512];
    if (tr104MapToHandlerValue(&e, value.c_str(), out.data(), out.size(), why, sizeof(why)) == 0) {
        tr104MapToModelValue(&e, out.data(), shown.data(), shown.size());
    }
    tr104MapToModelValue(&any, value.c_str(), shown.data(), shown.size());
    return 0;
}
