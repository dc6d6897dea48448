#include "logind/LogindBacklightWriter.h"

#include <utility>

namespace lumora::lx {

LogindBacklightWriter::LogindBacklightWriter(std::shared_ptr<LogindClient> logind)
    : logind_(std::move(logind)) {}

bool LogindBacklightWriter::setBrightness(const std::string& device, std::uint32_t raw) {
    return logind_
        ->callSession(QStringLiteral("SetBrightness"),
                      {QStringLiteral("backlight"), QString::fromStdString(device),
                       QVariant::fromValue(static_cast<quint32>(raw))})
        .ok;
}

}  // namespace lumora::lx
