// Compliance files come from anywhere (a colleague's mail, a USB stick): any
// content must load or be refused, and whatever loads must chart, print and
// give its figures against a prescription (years of records, overlaps,
// periods across centuries). The bytes go through the same decoding as a
// file's, without the file.

#include "app_context.h"
#include "compliance/compliance_days.h"
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
    // Odd inputs prescribe whole days, even ones a usual day's use.
    ctx.compliance.prescribed_hours = size % 2 ? 24 : 6.5;
    if (compliance::load_compliance_lines(ctx, lines)) {
        print::RecordingSurface surface;
        compliance::ComplianceMemory& m = ctx.compliance;
        compliance::compliance_print_page(surface, m.state, m.records, ctx.language, QLocale::c(),
                                          compliance::to_stamp(ctx.clock.now()),
                                          {QString(), 0, m.prescribed_hours, m.adherence_share});
        compliance::cmd_nextmonth_Click(ctx);
        if (const auto window =
                compliance::best_window(m.records, m.state, m.prescribed_hours, m.adherence_share))
            compliance::adherence_line(*window);
    }
    return 0;
}
