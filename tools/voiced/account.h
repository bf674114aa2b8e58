// What a line's SIP account is made of, and the account line the user agent takes for it.
//
// The voice profile's servers and each line's enable, directory number and credentials arrive
// as records; the registration period and the user agent's own port are not carried by any
// record and come from tr104-voiced's options.  A line registers when it is enabled and has a
// directory number and a registrar (or a proxy standing in for one).
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace voiced {

struct Server {
    std::string host;
    uint16_t port = 0;
    bool empty() const { return host.empty(); }
    // "host:port", or "host" when no port is set.
    std::string hostPort() const;
};

struct ProfileSettings {
    Server registrar;
    Server proxy;
    Server outboundProxy;
    uint32_t registrationPeriod = 3600;  // seconds
};

struct LineSettings {
    bool enabled = false;
    std::string number;
    std::string authUser;
    std::string password;
};

// The address of record the user agent names the line by in its events: sip:NUMBER@REGISTRAR.
std::string addressOfRecord(const ProfileSettings &profile, const LineSettings &line);

// The server a line's requests go to: the outbound proxy, else the proxy, else the registrar.
const Server &routeOf(const ProfileSettings &profile);

// The account line of a line that can register, nullopt when it cannot (disabled, no number,
// no registrar).  The outbound proxy routes every request when it is set, else the proxy does;
// the user name defaults to the directory number.  autoAnswer: the line's phone goes off hook
// by itself when called.
std::optional<std::string> accountLine(const ProfileSettings &profile, const LineSettings &line, bool autoAnswer);

// Why a line does not register, for the log ("" when it does).
std::string notRegisteringBecause(const ProfileSettings &profile, const LineSettings &line);

// The account line with its password replaced by "***": what the log may show.
std::string redacted(const std::string &account);

// The request URI of a number dialled from a line: sip:NUMBER@REGISTRAR, a full SIP URI as it is.
std::string dialUri(const ProfileSettings &profile, const std::string &number);

}  // namespace voiced
