#pragma once
// Turns the --link option into a device link backend.

#include "link/device_link.h"
#include "link/link_option.h"
#include "link/sim_peer.h"

#include <functional>
#include <memory>

namespace veltrako {
class Clock;
}

namespace veltrako::link {

// Builds the simulated device for "sim[:SCENARIO]"; nullptr with `error` set
// when the scenario cannot be loaded. The front ends pass the simulator's
// own factory, so the core does not depend on the simulator.
using SimPeerFactory =
    std::function<std::shared_ptr<SimPeer>(const QString& scenario, QString* error)>;

std::unique_ptr<DeviceLink> make_link(const LinkOption& option, Clock& clock,
                                      const SimPeerFactory& make_sim, QString* error);

} // namespace veltrako::link
