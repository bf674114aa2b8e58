// Announces the library's version to the board-support library when the library is loaded.
#include "tr104/core/host_imports.h"
#include "tr104/version.h"

namespace {

constexpr char kLibraryName[] = "libtr104.so";
constexpr char kLibraryVersion[] = "V" TR104_VERSION_STRING;

void exportVersion() {
    if (ux_bsp_version_export != nullptr) {
        ux_bsp_version_export(kLibraryName, kLibraryVersion, __DATE__, __TIME__);
    }
}

// Two initialisers run at load time, as the device's components expect: one announces the
// channel layer, the other the handler layer; both report the library as a whole.
__attribute__((constructor)) void announceChannelLayer() { exportVersion(); }
__attribute__((constructor)) void announceHandlerLayer() { exportVersion(); }

}  // namespace
