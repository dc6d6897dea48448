#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "edid/Edid.h"
#include "platform/Types.h"

namespace lumora::wl {

// What a Wayland compositor tells about a monitor: texts, sometimes the EDID itself.
struct MonitorStrings {
    std::string connector;  // "DP-1"
    std::string vendor;     // a PNP code ("DEL") or a manufacturer name ("Dell Inc.")
    std::string product;    // the EDID monitor name, or the product code as "0x…"
    std::string serial;     // the EDID serial text, or the serial number as "0x…"
};

// The EDID numbers as macOS reports them; 0 when unknown.
struct MonitorNumbers {
    std::uint32_t vendor = 0;   // the packed PNP code (Dell: 0x10AC)
    std::uint32_t product = 0;  // product code
    std::uint32_t serial = 0;   // serial number
    friend bool operator==(const MonitorNumbers&, const MonitorNumbers&) = default;
};

// The packed 16-bit EDID form of a three-letter PNP code ("DEL" = 0x10AC); 0 for anything else.
std::uint32_t pnpVendorNumber(const std::string& code);

// Numbers recovered from the compositor's texts where they carry them (a PNP code, "0x…").
MonitorNumbers numbersFromStrings(const MonitorStrings& strings);

struct MonitorIdentity {
    std::optional<lx::EdidInfo> edid;  // when the compositor gave a valid EDID
    MonitorStrings strings;
    // The numbers to report: the EDID's, else what the texts carry.
    [[nodiscard]] MonitorNumbers numbers() const;
};

// The IDs of the monitors connected together, in their order. With an EDID, or with nothing
// but a connector name, exactly the ID the X11 backend gives the same output, so per-display
// settings carry over between sessions; otherwise one from the compositor's texts, which names
// the monitor on any port. Never 0; a monitor whose ID an earlier one already has (identical
// models without serial numbers) is told apart by its connector.
std::vector<DisplayID> monitorDisplayIDs(const std::vector<MonitorIdentity>& monitors);

// The key for what is stored per display: "vendor-product-serial" in decimal (as on the other
// platforms) when the EDID gave the numbers or the texts carried all three; otherwise the texts
// themselves, since two models of one maker would share "4268-0-0".
std::string persistentKeyOf(const MonitorIdentity& monitor);

// The IDs of one server's monitors over its life: a monitor that stays connected keeps its ID,
// even when an identical twin is plugged in next to it; newcomers get monitorDisplayIDs'.
class DisplayIDs {
  public:
    std::vector<DisplayID> assign(const std::vector<MonitorIdentity>& monitors);

  private:
    std::map<std::string, DisplayID> present_;  // by connector and identity
};

}  // namespace lumora::wl
