// The service visit against the simulated concentrator: every file of a
// visit in a folder of its own, and a visit that fails part-way keeps the
// files it wrote whole and says which step failed and what is missing.

#include "compliance/compliance_readout.h"
#include "config/language.h"
#include "config/text_file.h"
#include "link/connection_state.h"
#include "pdf_output.h"
#include "protocol/poll_cycle.h"
#include "sim_helpers.h"
#include "status/status_readout.h"
#include "table.h"
#include "visit/visit.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

struct Session {
    Session() : d(*sim::load_scenario(QStringLiteral(VELTRAKO2_TEST_DATA "/visit.scn"))) {
        config::load_language(d.ctx.language, VELTRAKO2_LANG_DIR "/langen.txt", d.ui);
        status::install_status_memory(d.ctx);
        compliance::install_compliance(d.ctx);
        d.ctx.compliance.prescribed_hours = 15;
        protocol::connect_routine(d.ctx);
        tick_until([&] {
            return link::device_controls_enabled(d.ctx) && d.ctx.protocol.queue_count == 0;
        });
    }
    void tick() {
        d.clock.advance_ms(50);
        protocol::timer1_tick(d.ctx);
    }
    template <class Done> void tick_until(Done done) {
        for (int i = 0; i < 20000 && !done(); ++i)
            tick();
    }
    // A visit into `dir`; `before_poll` runs before each poll (a fault to set).
    visit::Visit& run(const QString& dir, const visit::PdfWriter& pdf = write_pdf,
                      const std::function<void(visit::Visit&)>& before_poll = {}) {
        visit::VisitRequest request;
        request.base_dir = dir;
        request.report.set_value(QStringLiteral("t_Patient"), QStringLiteral("Erika"));
        request.report.set_value(QStringLiteral("m_O2"), QStringLiteral("91"));
        request.report.limits.o2_min = 92; // the configuration's, as the command line sets them
        request.write_pdf = pdf;
        v = std::make_unique<visit::Visit>(d.ctx, std::move(request));
        v->start();
        tick_until([&] {
            if (before_poll)
                before_poll(*v);
            v->poll();
            return !v->running();
        });
        return *v;
    }
    static bool write_pdf(const QString& path, int pages, const visit::PageDrawer& draw,
                          QString* error) {
        return paint::print_pages_to_pdf(path, pages, draw, error);
    }

    LinkedDevice d;
    std::unique_ptr<visit::Visit> v;
};

QStringList names(const QStringList& paths) {
    QStringList n;
    for (const QString& p : paths)
        n << QFileInfo(p).fileName();
    return n;
}

using Failures = Table<QString, QString, int, QString>;

} // namespace

class TestVisit : public QObject {
    Q_OBJECT
private slots:
    void visit_writes_every_file_into_a_folder_of_its_own() {
        QTemporaryDir dir;
        Session s;
        // Every name holds the visit's start, as each save button would.
        const QString at = s.d.clock.now().toString("yyyyMMdd_HHmmss");
        const visit::Visit& v = s.run(dir.filePath("visits"));
        QCOMPARE(v.outcome(), visit::Outcome::written);
        QCOMPARE(QFileInfo(v.folder()).fileName(), QStringLiteral("VO2-0012345_2026-03-02"));
        const QStringList expected{"Status_VO2-0012345_LP1240010077_5121_" + at + ".txt",
                                   "Compliance_VO2-0012345_" + at + ".txt",
                                   "Compliance_VO2-0012345.pdf",
                                   "VO2-0012345_" + at + ".txt",
                                   "Pruefprotokoll_VO2-0012345_20260302.pdf",
                                   "Besuch.txt"};
        QCOMPARE(names(v.written()), expected);
        QCOMPARE(QDir(v.folder()).entryList(QDir::Files).size(), 6);
        QVERIFY(v.missing().isEmpty());
        const QStringList visit = *config::read_text_lines(v.folder() + "/Besuch.txt");
        QCOMPARE(visit.mid(0, 2), (QStringList{"SN|VO2-0012345", "LP|LP1240010077"}));
        QVERIFY(visit.contains("VERORDNUNG|15"));
        // The 5th reached 15 h exactly and counts; the 6th did not. Days
        // count from the first record's day; the day of the readout, in
        // March, is not over and does not count. The best 30 days close it.
        QCOMPARE(visit.mid(visit.indexOf("VERORDNUNG|15") + 1),
                 (QStringList{"2026-01|30.0|2|15.0|1|27", "2026-02|4.0|1|4.0|0|28",
                              "2026-03|0.0|1|0.0|0|1", "30d|2026-01-05|2026-02-03|1|30|not met"}));
        const QStringList report = *config::read_text_lines(v.written()[3]);
        QVERIFY(report.contains("t_Patient|Erika"));
        // What was measured, the limits it was judged by and the result.
        for (const char* line : {"m_O2|91", "GRENZE_O2|92", "ERGEBNIS|fail"})
            QVERIFY2(report.contains(line), line);

        // A second visit on the same day does not touch the first one's
        // folder. Without a prescription each month line ends in "-".
        s.d.ctx.compliance.prescribed_hours = 0;
        const visit::Visit& again = s.run(dir.filePath("visits"));
        QCOMPARE(again.outcome(), visit::Outcome::written);
        QCOMPARE(QFileInfo(again.folder()).fileName(), QStringLiteral("VO2-0012345_2026-03-02_2"));
        QCOMPARE(QDir(dir.filePath("visits")).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                 (QStringList{"VO2-0012345_2026-03-02", "VO2-0012345_2026-03-02_2"}));
        const QStringList unprescribed = *config::read_text_lines(again.folder() + "/Besuch.txt");
        QCOMPARE(unprescribed.mid(6), (QStringList{"2026-01|30.0|2|15.0|-", "2026-02|4.0|1|4.0|-",
                                                   "2026-03|0.0|1|0.0|-"}));

        // On a German system the prescription reads as a German writes it.
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        s.d.ctx.compliance.prescribed_hours = 6.5;
        const QStringList german =
            *config::read_text_lines(s.run(dir.filePath("visits")).folder() + "/Besuch.txt");
        QLocale::setDefault(QLocale::c());
        QCOMPARE(german.value(6), QString("VERORDNUNG|6,5"));
    }

    void failure_keeps_what_was_written_data() {
        // fault, the step that failed, files written, the reason given
        const Failures row;
        const QString not_read =
            "The compliance memory was not read completely: no valid answer for record ";
        row("device silent during the usage readout", "silent", "Read the compliance memory", 1,
            not_read);
        row("one record always refused", "refused", "Read the compliance memory", 1,
            not_read + "2 (records 0 to 3).");
        row("the status readout stalls", "stall", "Read the system status", 0,
            "No usable answer from the device for 10 s.");
        row("folder whose parent is a regular file", "file parent", "Make the folder", 0,
            "The folder could not be made in");
        row("disk full at the first PDF", "pdf", "Write the compliance PDF", 2,
            "The file could not be written:");
    }
    void failure_keeps_what_was_written() {
        const auto [fault, step, written, reason] = Failures::fetch();
        QTemporaryDir dir;
        QString base = dir.filePath("visits");
        if (fault == "file parent") {
            QFile file(dir.filePath("a file"));
            QVERIFY(file.open(QIODevice::WriteOnly));
            base = dir.filePath("a file/visits");
        }
        Session s;
        const visit::PdfWriter full_disk = [](const QString&, int, const visit::PageDrawer&,
                                              QString*) { return false; };
        const visit::Visit& v =
            s.run(base, fault == "pdf" ? full_disk : visit::PdfWriter(Session::write_pdf),
                  [&, stalled = false](visit::Visit& running) mutable {
                      if (fault == "silent" && running.step() == visit::Step::usage_read) {
                          sim::Faults silent;
                          silent.silent = true;
                          s.d.device->set_faults(silent);
                      }
                      if (fault == "refused" && running.step() == visit::Step::usage_read) {
                          sim::Faults refused;
                          refused.refused_answer_record = 2;
                          s.d.device->set_faults(refused);
                      }
                      // The request for the first status record never goes
                      // out, while the device goes on answering the rest.
                      if (fault == "stall" && !stalled) {
                          stalled = true;
                          protocol::drop_queued(s.d.ctx, 'e');
                      }
                  });
        QCOMPARE(v.outcome(), visit::Outcome::failed);
        QCOMPARE(visit::step_text(v.step(), s.d.ctx.language), step);
        // A folder made stays marked as incomplete.
        QCOMPARE(v.folder().isEmpty(), written == 0);
        QVERIFY(v.folder().isEmpty() || v.folder().endsWith("_unvollstaendig"));
        QCOMPARE(v.written().size(), written);
        // Exactly the files written are there, each whole: nothing half-written.
        if (!v.folder().isEmpty()) {
            QStringList in_folder = QDir(v.folder()).entryList(QDir::Files);
            QStringList written_names = names(v.written());
            in_folder.sort();
            written_names.sort();
            QCOMPARE(in_folder, written_names);
        }
        for (const QString& path : v.written())
            QVERIFY(config::read_text_lines(path).value_or(QStringList()).size() > 2);
        QCOMPARE(v.missing().size(), 6 - written);
        const QString text = v.result_text();
        QVERIFY2(text.contains(step + ": " + reason), qPrintable(text));
        QVERIFY2(text.contains("Not written: " + v.missing().join(", ")), qPrintable(text));
    }
};

QTEST_MAIN(TestVisit)
#include "test_visit.moc"
