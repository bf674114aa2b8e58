#include "voiced/account.h"

namespace voiced {

namespace {

// The registrar, or the proxy when no registrar is set.
const Server &registrarOf(const ProfileSettings &profile) {
    return profile.registrar.empty() ? profile.proxy : profile.registrar;
}

// Characters an account line uses as separators: a value holding one cannot be carried (and a
// password holding one would show past its redaction).
bool carriable(const std::string &value) {
    for (const char c : value) {
        if (static_cast<unsigned char>(c) <= ' ' || c == ';' || c == '"' || c == '<' || c == '>' || c == '\\' ||
            c == 0x7F) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::string Server::hostPort() const { return port == 0 ? host : host + ":" + std::to_string(port); }

std::string addressOfRecord(const ProfileSettings &profile, const LineSettings &line) {
    return "sip:" + line.number + "@" + registrarOf(profile).hostPort();
}

std::string notRegisteringBecause(const ProfileSettings &profile, const LineSettings &line) {
    if (!line.enabled) {
        return "disabled";
    }
    if (line.number.empty()) {
        return "no directory number";
    }
    if (registrarOf(profile).empty()) {
        return "no registrar or proxy address";
    }
    if (!carriable(line.number) || !carriable(line.authUser) || !carriable(line.password) ||
        !carriable(profile.registrar.host) || !carriable(profile.proxy.host) ||
        !carriable(profile.outboundProxy.host)) {
        return "a number, name, password or address holds a blank, a control character or one of ;\"<>\\";
    }
    return "";
}

const Server &routeOf(const ProfileSettings &profile) {
    if (!profile.outboundProxy.empty()) {
        return profile.outboundProxy;
    }
    return profile.proxy.empty() ? registrarOf(profile) : profile.proxy;
}

std::optional<std::string> accountLine(const ProfileSettings &profile, const LineSettings &line, bool autoAnswer) {
    if (!notRegisteringBecause(profile, line).empty()) {
        return std::nullopt;
    }
    std::string account = "<" + addressOfRecord(profile, line) + ">";
    account += ";auth_user=" + (line.authUser.empty() ? line.number : line.authUser);
    if (!line.password.empty()) {
        account += ";auth_pass=" + line.password;
    }
    const Server &route = routeOf(profile);
    if (&route != &registrarOf(profile)) {  // a route other than the registrar itself
        account += ";outbound=\"sip:" + route.hostPort() + ";lr\"";
    }
    account += ";regint=" + std::to_string(profile.registrationPeriod);
    if (autoAnswer) {
        account += ";answermode=auto";
    }
    return account;
}

std::string redacted(const std::string &account) {
    static const std::string kPass = ";auth_pass=";
    const size_t at = account.find(kPass);
    if (at == std::string::npos) {
        return account;
    }
    const size_t start = at + kPass.size();
    const size_t end = account.find(';', start);
    return account.substr(0, start) + "***" + (end == std::string::npos ? "" : account.substr(end));
}

std::string dialUri(const ProfileSettings &profile, const std::string &number) {
    if (number.rfind("sip:", 0) == 0) {
        return number;
    }
    return "sip:" + number + "@" + registrarOf(profile).hostPort();
}

}  // namespace voiced
