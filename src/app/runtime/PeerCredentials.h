#pragma once

#include <optional>

namespace lumora::app {

// The user id of the process at the other end of a connected local socket; nothing when the
// system cannot tell.
std::optional<unsigned> peerUserId(int socketDescriptor);

// Whether that process runs as the same user as this one. Unknown counts as a stranger.
bool peerIsThisUser(int socketDescriptor);

}  // namespace lumora::app
