// The team archive's server address comes from the ini or the command line:
// any text must give an address or a reason, never a crash; an address must
// read back the same from the form it is shown in, and what goes on to the
// driver must keep its options apart.

#include "archive/server_address.h"
#include "fuzz_support.h"

#include <QString>

#include <cstdint>

using namespace veltrako;

namespace {

bool same(const archive::ServerAddress& a, const archive::ServerAddress& b) {
    return a.host == b.host && a.port == b.port && a.user == b.user && a.database == b.database &&
           a.parameters == b.parameters;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString text = QString::fromUtf8(fuzz::input_bytes(data, size));
    const archive::ParsedAddress parsed = archive::parse_server_address(text);
    if (!parsed.address)
        return 0;
    const archive::ServerAddress& a = *parsed.address;
    const archive::ParsedAddress again = archive::parse_server_address(a.shown());
    if (!again.address || !same(a, *again.address))
        __builtin_trap();
    // One ";" between each two options, none inside a value.
    const QString options = a.connect_options();
    if (options.count(QLatin1Char(';')) != a.parameters.size() + 1)
        __builtin_trap();
    return 0;
}
