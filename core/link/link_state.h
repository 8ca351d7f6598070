#pragma once
// The one device link of the program and its open handle.

#include "link/device_link.h"

#include <memory>

namespace veltrako::link {

struct LinkState {
    std::unique_ptr<DeviceLink> backend;
    FtHandle device_handle = 0; // 0: no device open
};

} // namespace veltrako::link
