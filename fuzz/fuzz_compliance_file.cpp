// Compliance files come from anywhere (a colleague's mail, a USB stick): any
// content must load or be refused, and whatever loads must chart. The bytes
// go through the same decoding as a file's, without the file.

#include "app_context.h"
#include "compliance/compliance_file.h"
#include "compliance/compliance_print.h"
#include "compliance/compliance_readout.h"
#include "config/text_file.h"
#include "fuzz_support.h"
#include "print/recording_surface.h"

#include <cstdint>

using namespace veltrako;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::ReusedContext reused;
    AppContext& ctx = reused.fresh();
    compliance::install_compliance(ctx);
    const QStringList lines = config::decode_text_lines(fuzz::input_bytes(data, size));
    if (compliance::load_compliance_lines(ctx, lines)) {
        print::RecordingSurface surface;
        compliance::ComplianceMemory& m = ctx.compliance;
        compliance::compliance_print_page(surface, m.state, m.records, ctx.language, QLocale::c(),
                                          compliance::to_stamp(ctx.clock.now()), {});
        compliance::cmd_nextmonth_Click(ctx);
    }
    return 0;
}
