#include "platform/DisplayServer.h"

namespace lumora {

std::string DisplayServer::persistentKey(DisplayID id) const {
    return std::to_string(vendor(id)) + "-" + std::to_string(model(id)) + "-" +
           std::to_string(serial(id));
}

}  // namespace lumora
