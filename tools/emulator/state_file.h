// The emulator's configuration in a file, so that it survives a restart as a device's does.
//
// JSON: the protocol name the voice module reports, and one member per record family (by name),
// each an array of the stored records:
//   { "key": "<hex>", "length": N, "fields": { "line": 1, ... }, "data": "<hex>" }
// "data" is the record in hex without its trailing zero bytes; "fields" shows the fields the
// family names (key fields and named fields) as numbers or texts.  On load "data" is taken and
// then "fields" written over it, so that a field edited by hand takes effect.  The areas' own
// state (network settings, device switches, H.248 blocks, line tests) starts from its defaults.
#pragma once

#include <string>

#include "emulator/voice_module_emulator.h"

namespace vmemu {

// The command of a configuration save (Tr104VoiceCfgSave).
constexpr uint32_t kSaveVoiceCfgCmd = 99;

// Writes every stored record (atomically: a temporary file renamed over the old one).
bool saveState(VoiceModuleEmulator &emulator, const std::string &path, std::string *error);
// Puts back every record of the file over the emulator's defaults.  A missing file is not an
// error (a first start); a file that cannot be read or parsed is.
bool loadState(VoiceModuleEmulator &emulator, const std::string &path, std::string *error);

}  // namespace vmemu
