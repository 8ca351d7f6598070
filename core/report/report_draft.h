#pragma once
// The draft of a report being typed: kept beside the configuration, written
// whole a second after the last edit, offered again after a crash or a
// restart, and removed once the report is saved or deliberately discarded.
// It is no report file: its name does not end in ".txt" (the report dialogs
// never list it), its first line says it is a draft, and a report restored
// from it counts as unsaved.

#include "report/report_record.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <optional>

namespace veltrako {
class AppContext;
}

namespace veltrako::report {

// The draft's name in the configuration's folder.
inline constexpr auto draft_file_name = "veltrako2.entwurf";
// Where the draft of this program lives; empty while the program has no
// configuration file (then nothing is kept).
QString draft_path(const AppContext& ctx);

// Whether the report holds something a person typed: a text other than the
// date and time a fresh report starts with, or a ticked box.
bool has_typed_text(const ReportRecord& report);

// The draft's lines: "ENTWURF|<when>", "GERAETEDATEN|1" or "|0" (whether the
// snapshot holds valid device data), then the lines of the report file.
QStringList draft_lines(const ReportRecord& report, const QDateTime& when, const QLocale& locale);

struct Draft {
    ReportRecord report; // unsaved: report_changed is set
    QDateTime written;   // the last edit it holds
};
// The draft in `lines`; nothing when they are not a draft's. A draft that
// names no limits is judged by `limits` (the configuration's).
std::optional<Draft> parse_draft_lines(const QStringList& lines, const Limits& limits);
std::optional<Draft> read_draft(const QString& path, const Limits& limits);

// The draft of the report on the page is gone: saved or discarded on purpose.
void remove_draft(const AppContext& ctx);

// At start-up: when a draft is there, asks whether to restore it ("Entwurf
// vom … wiederherstellen?"). Yes gives the report, unsaved; No removes the
// draft. Nothing when there is none, or it cannot be read.
std::optional<ReportRecord> offer_draft(AppContext& ctx);

// Keeps the draft a second after the last edit. Every edit calls edited();
// tick() (from its own single-shot timer, or from a test that moves the
// clock by hand) writes once a second has passed on the context's clock
// since the last edit: the report as `collect` leaves it in ctx.report, when
// it is unsaved and holds typed text; a report emptied again has no draft.
class DraftKeeper {
public:
    static constexpr int delay_ms = 1000;

    explicit DraftKeeper(AppContext& ctx);
    DraftKeeper(const DraftKeeper&) = delete;
    DraftKeeper& operator=(const DraftKeeper&) = delete;

    // Puts what the page shows into ctx.report before a draft is written.
    std::function<void()> collect;

    void edited();
    void tick();
    // Nothing waits any more (the report was saved or discarded).
    void cancel();
    bool waiting() const { return edited_at_.has_value(); }

private:
    AppContext& ctx_;
    QTimer timer_;
    std::optional<qint64> edited_at_;
    bool failure_said_ = false;
};

} // namespace veltrako::report
