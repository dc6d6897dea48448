#include "runtime/PeerCredentials.h"

#include <sys/socket.h>
#include <sys/types.h>
#include <unistd.h>

namespace lumora::app {

std::optional<unsigned> peerUserId(int socketDescriptor) {
#if defined(__linux__)
    ucred credentials{};
    socklen_t length = sizeof credentials;
    if (getsockopt(socketDescriptor, SOL_SOCKET, SO_PEERCRED, &credentials, &length) != 0 ||
        length != sizeof credentials) {
        return std::nullopt;
    }
    return static_cast<unsigned>(credentials.uid);
#else
    uid_t user = 0;
    gid_t group = 0;
    if (getpeereid(socketDescriptor, &user, &group) != 0) return std::nullopt;
    return static_cast<unsigned>(user);
#endif
}

bool peerIsThisUser(int socketDescriptor) {
    auto user = peerUserId(socketDescriptor);
    return user && *user == static_cast<unsigned>(geteuid());
}

}  // namespace lumora::app
