#include "link/link_factory.h"

#include "link/ftdi_link.h"
#include "link/serial_link.h"
#include "link/sim_link.h"

namespace veltrako::link {

std::unique_ptr<DeviceLink> make_link(const LinkOption& option, Clock& clock,
                                      const SimPeerFactory& make_sim, QString* error) {
    switch (option.kind) {
    case LinkOption::Kind::ftdi:
        return std::make_unique<FtdiLink>();
    case LinkOption::Kind::serial:
        return std::make_unique<SerialLink>(option.path);
    case LinkOption::Kind::sim: {
        std::shared_ptr<SimPeer> peer = make_sim ? make_sim(option.scenario, error) : nullptr;
        if (!peer)
            return nullptr;
        // The simulated device answers at the pace of the real wire, so what
        // a technician sees in the demo is what a real device feels like.
        return std::make_unique<SimLink>(clock, std::move(peer), SimLink::WireTiming::realistic);
    }
    }
    return nullptr;
}

} // namespace veltrako::link
