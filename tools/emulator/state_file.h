// The emulator's configuration in a file, so that it survives a restart as a device's does.
//
// JSON: the protocol name the voice module reports, and one member per record family (by name),
// each an array of the stored records:
//   { "key": "<hex>", "length": N, "fields": { "line": 1, ... }, "data": "<hex>" }
// "data" is the record in hex without its trailing zero bytes; "fields" shows the fields the
// family names (key fields and named fields) as numbers or texts.  On load "data" is taken and
// then "fields" written over it, so that a field edited by hand takes effect.  The areas that keep
// configuration of their own (network settings, device switches, H.248 blocks) add a member each
// under "areas"; what is not configuration (counters, tests in progress) starts from its defaults.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "emulator/voice_module_emulator.h"

namespace vmemu {

// The command of a configuration save (Tr104VoiceCfgSave).
constexpr uint32_t kSaveVoiceCfgCmd = 99;

// Writes every stored record.  The file holds the lines' passwords: it is created with mode 0600
// and replaced atomically (a temporary file in the same folder, synced, renamed over the old
// one, the folder synced), so that a crash leaves the old file or the new one, never a part.
bool saveState(VoiceModuleEmulator &emulator, const std::string &path, std::string *error);
// An area's own configuration in the state file: save() gives its member of "areas", load() puts
// it back (false, and why, when a value cannot be taken).  A member missing from the file leaves
// the area's defaults.
struct StatePart {
    const char *name;
    nlohmann::json (*save)(VoiceModuleEmulator &emulator);
    bool (*load)(VoiceModuleEmulator &emulator, const nlohmann::json &saved, std::string *why);
};
struct StatePartRegistrar {
    explicit StatePartRegistrar(const StatePart &part);
};

// Bytes as hex text, and back into exactly `len` bytes (false when the text is not that).
std::string stateHex(const void *bytes, size_t len);
bool stateBytes(const nlohmann::json &hex, void *out, size_t len);

// Puts back every record of the file over the emulator's defaults.  A missing file is not an
// error (a first start); a file that cannot be read or parsed is, and says so in one line (the
// caller then stops without writing the file).
bool loadState(VoiceModuleEmulator &emulator, const std::string &path, std::string *error);

}  // namespace vmemu
