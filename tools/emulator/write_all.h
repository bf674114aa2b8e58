// Writing a whole buffer to a file descriptor, whatever a single write takes of it.
#pragma once

#include <string>

namespace vmemu {

enum class Descriptor { File, Socket };

// Writes all of `data` to fd, again after an interrupted call; false on an error (errno says
// which).  A socket is written with MSG_NOSIGNAL: a peer that went away is an error, not a
// SIGPIPE.
bool writeAll(int fd, const std::string &data, Descriptor kind = Descriptor::File);

}  // namespace vmemu
