// Whatever arrives on the wire goes through the frame receiver and, for
// every frame that passes its checks, through the response interpreter.
// The first input byte splits the rest into reads of varying size; frames
// with a valid checksum are built from the rest too, so the interpreter sees
// arbitrary payloads and not only CRC failures. Status records that end a
// readout are put into the table, in either layout.

#include "fuzz_support.h"
#include "protocol/frame_codec.h"
#include "protocol/frames.h"
#include "status/status_readout.h"

#include <cstdint>

using namespace veltrako;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2)
        return 0;
    static fuzz::ReusedContext reused;
    AppContext& ctx = reused.fresh();
    // The end of a status readout formats whatever records arrived.
    status::install_status_memory(ctx);
    const int chunk = 1 + data[0] % 64;
    const bool framed = data[1] & 1;
    QByteArray rest(reinterpret_cast<const char*>(data + 2), static_cast<qsizetype>(size - 2));
    if (framed) {
        // Cut the input into payloads of up to 100 bytes, each in a good frame.
        QByteArray wire;
        for (qsizetype at = 0; at < rest.size(); at += chunk)
            wire += protocol::build_frame(rest.mid(at, std::min<qsizetype>(chunk, 100)));
        rest = wire + '#';
    }
    for (qsizetype at = 0; at < rest.size(); at += chunk)
        protocol::parse_frames(ctx, rest.mid(at, chunk));
    return 0;
}
