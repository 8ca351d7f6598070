#pragma once
// A technician's visit in one go, with the device connected: the status
// memory read and saved, the usage memory read, saved and printed for the
// last months, the inspection report filed and printed, and a summary of the
// visit, all in one new folder. The visit only runs each feature's own
// readouts, writers and printouts in order; it is driven by the poll timer
// like the readouts it starts, so the window and the command line watch the
// same steps.

#include "progress/deadline.h"
#include "progress/progress.h"
#include "report/report_record.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>

namespace veltrako {
class AppContext;
}
namespace veltrako::config {
struct LanguageTables;
}
namespace veltrako::print {
class DrawingSurface;
}

namespace veltrako::visit {

// Draws page `page` (0 upwards) of a document.
using PageDrawer = std::function<void(print::DrawingSurface& surface, int page)>;
// Writes `pages` pages to the PDF file `path`, whole or not at all; false,
// with the reason in `error`, when it could not. The front end brings it:
// drawing on a PDF needs more than the core links.
using PdfWriter =
    std::function<bool(const QString& path, int pages, const PageDrawer& draw, QString* error)>;

struct VisitRequest {
    QString base_dir; // the visit's folder is made in here
    int months = 12;  // the compliance PDF covers this many months up to the latest
    // The report form's fields; the device data is the snapshot taken during
    // the visit.
    report::ReportRecord report;
    PdfWriter write_pdf;
};

// In the order they run.
enum class Step {
    identity,
    status_read,
    folder,
    status_file,
    usage_read,
    compliance_file,
    compliance_pdf,
    report_file,
    report_pdf,
    visit_file,
    done,
};
inline constexpr int step_count = static_cast<int>(Step::done);

enum class Outcome { running, written, failed, cancelled };

// The name of a step in the user's language.
QString step_text(Step step, const config::LanguageTables& language);

// What a folder's name ends in while its visit is not complete: the visit
// makes it so and takes it off once every file is written, so a visit that
// failed, was cancelled or never ended (a crash, a pulled plug) is seen as
// such in any file manager.
inline constexpr auto incomplete_suffix = "_unvollstaendig";

// How long a step that waits for the device waits without getting anything
// it can use before it fails.
inline constexpr qint64 step_deadline_ms = 10000;

// "<serial number>_<yyyy-mm-dd>", then "_2", "_3", ... for further visits of
// the day: the first of these that does not exist yet, with or without
// incomplete_suffix, made inside `base_dir` (which is made first when
// missing) with that suffix. Empty when no folder could be made.
QString make_visit_folder(const QString& base_dir, const QString& serial, const QDate& day);

// The months the compliance PDF shows: those with use among the `months`
// calendar months up to the latest month with use, newest first.
std::vector<qint64> pdf_months(const std::vector<qint64>& months_with_use, int months);

class Visit {
public:
    Visit(AppContext& ctx, VisitRequest request);

    // Begins with the device's identity and the status readout. A visit
    // without a device ends at once, failed.
    void start();
    // After every tick of the poll timer: moves on when a readout has ended,
    // notices a device that stopped answering or a step that got nothing for
    // step_deadline_ms, and writes the files once everything is read.
    void poll();
    // Abbrechen: no further step; the files written so far stay.
    void cancel();

    Outcome outcome() const { return outcome_; }
    bool running() const { return outcome_ == Outcome::running; }
    Step step() const { return step_; }
    // Step k of step_count, counted from 1.
    int step_number() const { return static_cast<int>(step_) + 1; }
    // The running readout's progress; files count as one unit each.
    progress::Standing standing() const;
    // The visit's folder; it carries incomplete_suffix unless the visit was
    // written completely.
    QString folder() const { return folder_; }
    // Full paths, in the order written.
    QStringList written() const { return written_; }
    // File names that were meant to be written and were not.
    QStringList missing() const;
    // What the person reads at the end: the folder and the files, or the step
    // that failed, why, and what is missing.
    QString result_text() const;

    // Called after every change of the step or the outcome.
    std::function<void()> changed;

private:
    void enter(Step step);
    void fail(const QString& why);
    // False, after failing the visit, when a step that waits for the device
    // got nothing it could use for step_deadline_ms.
    bool step_answered();
    void write_files();
    // The visit's end to the device's history, once.
    void hand_on();
    bool write_step(Step step, const QString& name,
                    const std::function<bool(const QString&)>& write);
    QStringList visit_lines() const;
    // The folder without incomplete_suffix, the written files with it.
    bool mark_complete();

    AppContext& ctx_;
    VisitRequest request_;
    QDateTime started_;
    Step step_ = Step::identity;
    Outcome outcome_ = Outcome::running;
    QString reason_;
    QString folder_;
    QStringList planned_; // file names, in the order they are written
    QStringList written_;
    progress::Progress files_;
    // The device step's patience, and what it had got when last armed.
    progress::Deadline step_deadline_;
    progress::Standing seen_;
    bool handed_on_ = false;
};

} // namespace veltrako::visit
