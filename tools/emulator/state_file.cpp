// The emulator's state file (see state_file.h).
#include "emulator/state_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <vector>

#include "emulator/protocol_family.h"
#include "emulator/write_all.h"
#include "tr104/version.h"

namespace vmemu {
namespace {

using nlohmann::json;

std::string toHex(const char *bytes, size_t len) {
    static const char digits[] = "0123456789abcdef";
    std::string out;
    for (size_t i = 0; i < len; ++i) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        out.push_back(digits[b >> 4]);
        out.push_back(digits[b & 15]);
    }
    return out;
}

bool fromHex(const std::string &hex, std::string *out) {
    if (hex.size() % 2 != 0) {
        return false;
    }
    out->clear();
    for (size_t i = 0; i < hex.size(); i += 2) {
        char *end = nullptr;
        const std::string pair = hex.substr(i, 2);
        const unsigned long b = std::strtoul(pair.c_str(), &end, 16);
        if (*end != '\0') {
            return false;
        }
        out->push_back(static_cast<char>(b));
    }
    return true;
}

// The fields a family names: its key fields, then the named fields of a set.
std::vector<Field> namedFields(const RecordFamily &family) {
    std::vector<Field> out;
    auto add = [&](const Field &f) {
        if (f.name != nullptr && f.name[0] != '\0') {
            out.push_back(f);
        }
    };
    for (const Field &f : family.keys) {
        add(f);
    }
    for (const MaskedField &m : family.maskedFields) {
        add(m.field);
    }
    for (const Field &f : family.setFields) {
        add(f);
    }
    return out;
}

// Integers of 1, 2 or 4 bytes in the host's order; wider fields are texts up to their end.
json fieldValue(const Field &f, const std::vector<char> &data) {
    if (f.offset + f.width > data.size()) {
        return nullptr;
    }
    const char *at = data.data() + f.offset;
    if (f.width > 4) {
        return std::string(at, strnlen(at, f.width));
    }
    uint32_t v = 0;
    if (f.width == 1) {
        v = static_cast<unsigned char>(*at);
    } else if (f.width == 2) {
        uint16_t w;
        std::memcpy(&w, at, 2);
        v = w;
    } else if (f.width == 4) {
        std::memcpy(&v, at, 4);
    }
    return v;
}

void writeField(const Field &f, const json &value, std::vector<char> *data) {
    if (f.offset + f.width > data->size()) {
        return;
    }
    char *at = data->data() + f.offset;
    if (value.is_string() && f.width > 4) {
        const std::string text = value.get<std::string>();
        std::memset(at, 0, f.width);
        std::memcpy(at, text.data(), std::min<size_t>(text.size(), f.width - 1));
    } else if (value.is_number_integer()) {
        const auto v = value.get<uint32_t>();
        if (f.width == 1) {
            *at = static_cast<char>(v);
        } else if (f.width == 2) {
            const auto w = static_cast<uint16_t>(v);
            std::memcpy(at, &w, 2);
        } else if (f.width == 4) {
            std::memcpy(at, &v, 4);
        }
    }
}

std::vector<StatePart> &stateParts() {
    static std::vector<StatePart> parts;
    return parts;
}

// Replaces the file at `path` with `text` so that a crash at any point leaves either the old
// file or the new one, never part of one: a temporary file of mode 0600 in the same folder
// (the configuration holds the lines' passwords), written and synced, renamed over the old one,
// and the folder synced so that the rename itself is on disk.
bool replaceFile(const std::string &path, const std::string &text, std::string *error) {
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
    std::string tmp = path + ".XXXXXX";
    const int fd = ::mkstemp(tmp.data());  // mode 0600
    if (fd < 0) {
        *error = "cannot create a temporary file beside " + path + ": " + std::strerror(errno);
        return false;
    }
    const bool written = writeAll(fd, text) && ::fsync(fd) == 0;
    const int savedErrno = errno;
    if (::close(fd) != 0 || !written) {
        *error = "cannot write " + tmp + ": " + std::strerror(written ? errno : savedErrno);
        ::unlink(tmp.c_str());
        return false;
    }
    if (std::rename(tmp.c_str(), path.c_str()) != 0) {
        *error = "cannot replace " + path + ": " + std::strerror(errno);
        ::unlink(tmp.c_str());
        return false;
    }
    const int dir = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool synced = dir >= 0 && ::fsync(dir) == 0;
    if (dir >= 0) {
        ::close(dir);
    }
    if (!synced) {
        *error = "cannot sync the folder " + folder + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

}  // namespace

StatePartRegistrar::StatePartRegistrar(const StatePart &part) { stateParts().push_back(part); }

std::string stateHex(const void *bytes, size_t len) { return toHex(static_cast<const char *>(bytes), len); }

bool stateBytes(const json &hex, void *out, size_t len) {
    std::string bytes;
    if (!hex.is_string() || !fromHex(hex.get<std::string>(), &bytes) || bytes.size() != len) {
        return false;
    }
    std::memcpy(out, bytes.data(), len);
    return true;
}

bool saveState(VoiceModuleEmulator &emulator, const std::string &path, std::string *error) {
    std::map<std::string, RecordFamily> families;
    for (RecordFamily &f : emulator.families()) {
        families[f.name] = std::move(f);
    }
    json byFamily = json::object();
    for (const VoiceModuleEmulator::StoredRecord &r : emulator.storedRecords()) {
        size_t used = r.data.size();
        while (used > 0 && r.data[used - 1] == 0) {
            --used;
        }
        json entry = {{"key", toHex(r.keyBytes.data(), r.keyBytes.size())}, {"length", r.data.size()}};
        if (auto f = families.find(r.family); f != families.end()) {
            json fields = json::object();
            for (const Field &field : namedFields(f->second)) {
                fields[field.name] = fieldValue(field, r.data);
            }
            if (!fields.empty()) {
                entry["fields"] = fields;
            }
        }
        entry["data"] = toHex(r.data.data(), used);
        byFamily[r.family].push_back(entry);
    }
    json areas = json::object();
    for (const StatePart &part : stateParts()) {
        areas[part.name] = part.save(emulator);
    }
    const json doc = {{"tr104-vmemu", TR104_VERSION_STRING},
                      {"protocol", protocolName(emulator)},
                      {"families", byFamily},
                      {"areas", areas}};
    return replaceFile(path, doc.dump(2) + '\n', error);
}

bool loadState(VoiceModuleEmulator &emulator, const std::string &path, std::string *error) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0 && errno == ENOENT) {
        return true;  // a first start
    }
    std::ifstream in(path);
    if (!in || !S_ISREG(st.st_mode)) {
        *error = path + ": cannot read the state file: " + (in ? "not a regular file" : std::strerror(errno)) +
                 "; it is left as it is";
        return false;
    }
    const json doc = json::parse(in, nullptr, false);
    if (doc.is_discarded() || !doc.is_object() || !doc.contains("families") || !doc["families"].is_object()) {
        *error = path + ": not a state file of tr104-vmemu (" +
                 (doc.is_discarded() ? std::string("not JSON") : std::string("no \"families\" object")) +
                 "); it is left as it is";
        return false;
    }
    if (doc.contains("protocol") && doc["protocol"].is_string()) {
        setProtocolName(emulator, doc["protocol"].get<std::string>());
    }
    std::map<std::string, RecordFamily> families;
    for (RecordFamily &f : emulator.families()) {
        families[f.name] = std::move(f);
    }
    for (const auto &[name, records] : doc["families"].items()) {
        for (const json &entry : records) {
            if (!entry.is_object() || !entry.value("length", json()).is_number_unsigned() ||
                !entry.value("key", json()).is_string() || !entry.value("data", json()).is_string()) {
                *error = path + ": a record of " + name + " is malformed";
                return false;
            }
            VoiceModuleEmulator::StoredRecord r{name, {}, {}};
            std::string data;
            const size_t length = entry.value("length", 0u);
            if (!fromHex(entry.value("key", ""), &r.keyBytes) || !fromHex(entry.value("data", ""), &data) ||
                data.size() > length) {
                *error = path + ": a record of " + name + " is malformed";
                return false;
            }
            r.data.assign(length, 0);
            std::memcpy(r.data.data(), data.data(), data.size());
            if (auto f = families.find(name); f != families.end() && entry.contains("fields")) {
                for (const Field &field : namedFields(f->second)) {
                    if (entry["fields"].contains(field.name)) {
                        writeField(field, entry["fields"][field.name], &r.data);
                    }
                }
            }
            emulator.restoreRecord(r);
        }
    }
    if (doc.contains("areas") && doc["areas"].is_object()) {
        for (const StatePart &part : stateParts()) {
            if (!doc["areas"].contains(part.name)) {
                continue;
            }
            std::string why = "malformed";
            bool ok = false;
            try {
                ok = part.load(emulator, doc["areas"][part.name], &why);
            } catch (const json::exception &) {
                ok = false;  // a value of the wrong type
            }
            if (!ok) {
                *error = path + ": areas." + part.name + ": " + why;
                return false;
            }
        }
    }
    return true;
}

}  // namespace vmemu
