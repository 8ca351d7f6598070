#pragma once
// Measurement noise that depends only on the seed, the quantity and the device
// tick it belongs to, so an answer is the same whenever it is computed.

#include <cstdint>

namespace veltrako::sim {

// A value in [-1, 1) for quantity `stream` at device tick `tick`.
inline double noise(std::uint64_t seed, int stream, std::int64_t tick) {
    // splitmix64 over the three inputs
    std::uint64_t z = seed * 0x9E3779B97F4A7C15ull +
                      static_cast<std::uint64_t>(stream) * 0xD1B54A32D192ED03ull +
                      static_cast<std::uint64_t>(tick);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    z ^= z >> 31;
    return static_cast<double>(z >> 11) / 4503599627370496.0 - 1.0; // 2^52
}

} // namespace veltrako::sim
