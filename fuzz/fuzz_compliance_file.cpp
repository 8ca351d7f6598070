// Compliance files come from anywhere (a colleague's mail, a USB stick): any
// content must load or be refused, and whatever loads must chart.

#include "app_context.h"
#include "compliance/compliance_file.h"
#include "compliance/compliance_print.h"
#include "compliance/compliance_readout.h"
#include "fuzz_support.h"
#include "print/recording_surface.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdint>

using namespace veltrako;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("compliance.txt"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return 0;
    file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    file.close();
    fuzz::StillClock clock;
    fuzz::SilentUi ui;
    AppContext ctx(clock, ui, nullptr);
    compliance::install_compliance(ctx);
    if (compliance::load_compliance_file(ctx, path)) {
        print::RecordingSurface surface;
        compliance::ComplianceMemory& m = ctx.compliance;
        compliance::compliance_print_page(surface, m.state, m.records, ctx.language, QLocale::c(),
                                          compliance::to_stamp(clock.now()), {});
        compliance::cmd_nextmonth_Click(ctx);
    }
    return 0;
}
