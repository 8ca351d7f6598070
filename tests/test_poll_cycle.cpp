// The send queue and the poll tick against the simulated concentrator over
// the in-process link, with a hand-driven clock: order of the initial requests,
// the version gates, repetitions on silence, the periodic schedule, the fast
// path of compliance record reads, and the communication log.

#include "app_context.h"
#include "compliance/compliance_readout.h"
#include "device/settings.h"
#include "fake_link_context.h"
#include "link/device_connection.h"
#include "link/sim_link.h"
#include "protocol/commands.h"
#include "protocol/poll_cycle.h"
#include "protocol/response_interpreter.h"
#include "protocol_harness.h"
#include "sim/concentrator.h"
#include "sim/scenario.h"
#include "status/status_readout.h"
#include "visit/visit.h"

#include <QMap>
#include <QTemporaryDir>

using namespace veltrako;
using namespace veltrako::testing;
using namespace veltrako::protocol;

namespace {

// The device's side of the cable as it is, with every write the program
// makes kept apart, to see what went on the wire besides frames.
struct Wiretap final : link::SimPeer {
    explicit Wiretap(std::shared_ptr<sim::Concentrator> d) : device(std::move(d)) {}
    bool plugged_in() const override { return device->plugged_in(); }
    void receive(const QByteArray& bytes, double now_ms) override {
        writes << bytes;
        device->receive(bytes, now_ms);
    }
    QByteArray transmit(double now_ms) override { return device->transmit(now_ms); }
    double next_transmit_ms() const override { return device->next_transmit_ms(); }
    std::shared_ptr<sim::Concentrator> device;
    QList<QByteArray> writes;
};

struct Harness {
    explicit Harness(const QByteArray& sw = "5301", const QByteArray& more = {}) {
        QString error;
        const auto scenario = sim::parse_scenario("SW=" + sw + "\n" + more, &error);
        if (!scenario)
            qFatal("scenario: %s", qPrintable(error));
        device = std::make_shared<sim::Concentrator>(*scenario);
        device->set_observer([this](const sim::Concentrator::Event& e) {
            if (!e.boot_loader)
                received << e.request;
        });
        wire = std::make_shared<Wiretap>(device);
        ctx = std::make_unique<AppContext>(clock, ui, std::make_unique<link::SimLink>(clock, wire));
        for (int n : {4, 5})
            ctx->language.language_text[n] = QStringLiteral("text%1").arg(n);
    }
    // Connected, the initial sequence answered.
    void connect(int ticks = 40) {
        connect_routine(*ctx);
        tick(ticks);
    }
    void tick(int n = 1) {
        for (int i = 0; i < n; ++i) {
            clock.advance_ms(50);
            timer1_tick(*ctx);
        }
    }
    void set_silent(bool on) { set(&sim::Faults::silent, on); }
    void set(bool sim::Faults::*fault, bool on) {
        sim::Faults f = device->faults();
        f.*fault = on;
        device->set_faults(f);
    }
    // Reads and forgets whatever answers are still on their way, so that a
    // test starts from a quiet line.
    void drain() {
        clock.advance_ms(100);
        link::read_waiting(*ctx);
    }
    ManualClock clock;
    FakeUserInterface ui;
    std::shared_ptr<sim::Concentrator> device;
    std::shared_ptr<Wiretap> wire;
    std::unique_ptr<AppContext> ctx;
    QList<QByteArray> received; // every request the device took, in order
};

QList<QByteArray> without(QList<QByteArray> list, const QList<QByteArray>& dropped) {
    list.removeIf([&](const QByteArray& p) { return dropped.contains(p); });
    return list;
}

} // namespace

class TestPollCycle : public QObject {
    Q_OBJECT
private slots:
    void initial_sequence_goes_out_in_order_data() {
        const Table<QByteArray, QList<QByteArray>> row; // version, commands withheld
        row("version 53: everything", "5301", {});
        row("version 52: no \"!\"", "5201", {"!"});
        row("version 50: no U, O, \"!\"", "5001", {"U", "O", "!"});
        // An identity the device leaves empty: nothing that needs one.
        row("no identity: no T, S, U, O, X, \"!\"", "", {"T", "S", "U", "O", "X", "!"});
        row("version 21: no U, O, X, \"!\"", "2141", {"U", "O", "X", "!"});
    }
    void initial_sequence_goes_out_in_order() {
        const auto [sw, withheld] = Table<QByteArray, QList<QByteArray>>::fetch();
        Harness h(sw);
        connect_routine(*h.ctx);
        QVERIFY(h.ui.busy);
        QVERIFY(h.ctx->timer1.enabled());
        h.tick(29);
        const QList<QByteArray> expected = without(cmd::initial_sequence(), withheld);
        QCOMPARE(h.received.mid(0, expected.size()), expected);
        QVERIFY(h.ctx->device.live_valid);
        QVERIFY(!h.ui.busy);
        QCOMPARE(h.ctx->device.SW, QString::fromLatin1(sw));
    }

    void withheld_command_does_not_block_the_next() {
        Harness h("5201");
        h.connect(30);
        h.received.clear();
        h.ctx->protocol.queue_count = 0;
        h.ctx->protocol.waiting_reply = false;
        queue_command(*h.ctx, "!");
        queue_command(*h.ctx, "X");
        send_next(*h.ctx);
        QVERIFY(h.received.isEmpty()); // "!" dropped, nothing sent this time
        QCOMPARE(h.ctx->protocol.queue_count, 1);
        send_next(*h.ctx);
        QCOMPARE(h.received, QList<QByteArray>{"X"});

        // A hundred commands waiting are the most: one more empties the queue.
        for (int i = 0; i < 100; ++i)
            queue_command(*h.ctx, "I");
        QVERIFY(h.ui.messages.isEmpty());
        QCOMPARE(h.ctx->protocol.queue_count, 100);
        queue_command(*h.ctx, "T");
        QCOMPARE(h.ui.messages, QStringList{"Outbuffer overflow"});
        QCOMPARE(h.ctx->protocol.queue_count, 0);
    }

    // A silent device is asked three times more, then given up, reconnected
    // silently and given up again, over and over; the technician is told once
    // per lost connection, and the status bar says meanwhile that it does not
    // answer.
    void silent_device_is_given_up_with_one_message_per_loss() {
        Harness h;
        h.ui.page = Page::protokoll; // a report being typed
        connect_routine(*h.ctx);
        h.set_silent(true);
        h.tick(101); // the first sends "?"
        const QStringList lines = h.ui.out.split("\r\n", Qt::SkipEmptyParts);
        QStringList timeouts = lines.filter(" Timeout Nr ");
        QCOMPARE(timeouts.size(), 3);
        for (int i = 0; i < 3; ++i)
            QVERIFY2(timeouts[i].endsWith(QStringLiteral(" Timeout Nr %1 Command:?").arg(i + 1)),
                     qPrintable(timeouts[i]));
        QCOMPARE(h.received.mid(0, 4), (QList<QByteArray>{"?", "?", "?", "?"}));
        QCOMPARE(h.ui.messages, QStringList{"text4\r\ntext5"});
        QVERIFY(lines.contains("Device Closed"));
        QCOMPARE(h.ui.page, Page::protokoll); // left where the technician is
        QVERIFY(h.ctx->timer1.enabled());

        h.tick(600); // 30 s more
        QCOMPARE(h.ui.messages, QStringList{"text4\r\ntext5"});
        QVERIFY2(h.ui.out.count("Device Closed") >= 3, qPrintable(h.ui.out)); // given up again
        QCOMPARE(h.ctx->link.connection, ConnectionState::not_answering);
        QVERIFY(!h.ui.connection_states.contains(ConnectionState::connected));

        // It answers again: connected; when it falls silent once more, that
        // is a new loss with its own message.
        h.set_silent(false);
        h.tick(200);
        QCOMPARE(h.ctx->link.connection, ConnectionState::connected);
        h.wire->writes.clear();
        h.set_silent(true);
        h.tick(101);
        QCOMPARE(h.ui.messages.size(), 2);
        // It said who it is before it fell silent, so it is not in its boot
        // loader: up to this give-up it hears frames only, no loader sync.
        for (const QByteArray& w : h.wire->writes)
            QVERIFY2(w.startsWith('#'), w.toHex().constData());
        h.tick(100);
        QCOMPARE(h.ui.connection_states.last(), ConnectionState::not_answering);
    }

    // The answer time-out looks only at the clock: a silent device is asked
    // again even with no command outstanding (with one outstanding, see the
    // silent device above).
    void timeout_fires_without_a_command_outstanding() {
        Harness h;
        h.connect();
        QVERIFY(h.ctx->device.live_valid);
        h.drain();
        h.ctx->protocol.queue_count = 0;
        h.ctx->protocol.waiting_reply = false;
        h.ctx->protocol.last_command = "S";
        h.received.clear();
        h.ui.out.clear();
        h.clock.advance_ms(1100); // past the one-second time-out, no answer since
        timer1_tick(*h.ctx);
        QVERIFY2(h.ui.out.endsWith(" Timeout Nr 1 Command:S\r\n"), qPrintable(h.ui.out));
        QCOMPARE(h.received.value(0), QByteArray("S"));
        QVERIFY(h.ctx->protocol.waiting_reply);
        QCOMPARE(h.ctx->protocol.retry_count, 1);

        // Across midnight the second of the day starts again from 0.
        h.tick(40); // answered again
        h.clock.set_now(QDateTime(QDate(2026, 3, 2), QTime(23, 59, 59, 800), Qt::UTC));
        h.ctx->device.last_answer_time = seconds_since_midnight(h.clock.now());
        h.set_silent(true);
        h.ui.out.clear();
        h.tick(1); // 23:59:59.850
        h.clock.set_now(QDateTime(QDate(2026, 3, 3), QTime(0, 0, 0, 300), Qt::UTC));
        timer1_tick(*h.ctx); // 0.5 s later, across midnight: no repetition yet
        QVERIFY(!h.ui.out.contains("Timeout"));
        h.clock.set_now(QDateTime(QDate(2026, 3, 3), QTime(0, 0, 1, 0), Qt::UTC));
        timer1_tick(*h.ctx);
        QVERIFY(h.ui.out.contains("Timeout Nr 1"));
    }

    // At version code "52" the schedule asks for ZEITEN0..6 and for the
    // information text, and the queue then withholds the information text,
    // which only "53" on understands; at "51" neither is asked for.
    void schedule_at_the_version_boundary_data() {
        const Table<QByteArray, bool, bool> row; // version, timings asked, "!" sent
        row("version 51", "511", false, false);
        row("version 52", "521", true, false);
        row("version 53", "531", true, true);
    }
    void schedule_at_the_version_boundary() {
        const auto [sw, timings, info_sent] = Table<QByteArray, bool, bool>::fetch();
        Harness h(sw);
        h.connect();
        QCOMPARE(h.ctx->device.family_code, QString::fromLatin1(sw.left(2)));
        // Ticks 21..35 of a 400-tick period, with the device silent and the
        // time-out out of reach, so that everything scheduled stays queued.
        h.set_silent(true);
        h.drain();
        h.ctx->config.TIMEOUT = 1e6;
        h.ctx->protocol.queue_count = 0;
        h.ctx->protocol.waiting_reply = true;
        h.ctx->protocol.tick_count = 400 * 7 + 20;
        h.tick(15);
        const auto r = [](int i) { return cmd::read_timing(i); };
        // "I" and "T" come due again in the window but are already waiting.
        const QList<QByteArray> window{r(0), r(1), "I",  r(2), "T", r(3),
                                       r(4), r(5), r(6), "S",  "!"};
        const QList<QByteArray> expected =
            timings ? window : without(window, {r(0), r(1), r(2), r(3), r(4), r(5), r(6), "!"});
        QCOMPARE(queued(*h.ctx), expected);

        // Sent one by one: only the information text may be held back.
        h.received.clear();
        while (h.ctx->protocol.queue_count > 0) {
            h.ctx->protocol.waiting_reply = false;
            send_next(*h.ctx);
        }
        QCOMPARE(h.received, info_sent ? expected : without(expected, {"!"}));
    }

    // The general reset returns every part of the link state to idle at once.
    void reset_link_state_clears_everything() {
        Harness h;
        h.connect();
        int resets = 0;
        h.ctx->hooks.link_reset = [&] { ++resets; };
        ProtocolState& p = h.ctx->protocol;
        p.rx_buffer = "#5ab";
        queue_command(*h.ctx, "I");
        queue_command(*h.ctx, "T");
        p.waiting_reply = true;
        p.last_command = "S";
        p.retry_count = 2;
        h.ctx->timer1.set_enabled(true);
        const link::FtHandle handle = h.ctx->link.device_handle;
        QVERIFY(!h.ctx->device.SN.isEmpty());
        QVERIFY(!h.ctx->live_history.samples().empty());
        h.clock.advance_ms(700);
        const int changes = h.ui.record_changes;

        reset_link_state(*h.ctx);
        // Buffer, queue, wait, last command, repetitions, record, history.
        QCOMPARE((QList<qsizetype>{p.rx_buffer.size(), p.queue_count, p.waiting_reply,
                                   p.last_command.size(), p.retry_count, h.ctx->device.SN.size(),
                                   h.ctx->device.live_valid,
                                   qsizetype(h.ctx->live_history.samples().size())}),
                 QList<qsizetype>(8, 0));
        QCOMPARE(h.ctx->device.last_answer_time, seconds_since_midnight(h.clock.now()));
        QCOMPARE(h.ui.record_changes, changes + 1);
        QCOMPARE(resets, 1);
        QVERIFY(!h.ctx->timer1.enabled());
        QCOMPARE(h.ctx->link.device_handle, handle); // the device stays open

        // Nothing of the old state comes back: the next tick sends nothing.
        h.received.clear();
        h.tick(1);
        QVERIFY(h.received.isEmpty());
    }

    // Polling never stops silently: while a device is open and Timer1 is off
    // (as a queue overflow leaves it) the status bar says so, and a job that
    // needs the device starts it again; its commands go out without anyone
    // pressing "Verbindung initialisieren".
    void a_job_starts_polling_that_was_off_data() {
        using Job = std::function<void(AppContext&)>;
        Table<Job, QByteArray> row; // the job, its first command
        row("status readout", Job(status::cmd_sysstatread_Click), cmd::read_status_record(1));
        row("usage readout", Job(compliance::cmd_complianceread_Click), cmd::compliance_count());
        row("usage erased", Job(compliance::cmd_compliancedelete_Click), cmd::compliance_erase());
        row("service visit", Job([](AppContext& ctx) { visit::Visit(ctx, {}).start(); }),
            cmd::read_status_record(1));
        row("setting written", Job([](AppContext& ctx) {
                QCOMPARE(device::cmd_Restzeit_Click(ctx), device::WriteOutcome::confirmed);
            }),
            cmd::set_remaining(250));
    }
    void a_job_starts_polling_that_was_off() {
        const auto [job, first_command] =
            Table<std::function<void(AppContext&)>, QByteArray>::fetch();
        Harness h;
        AppContext& ctx = *h.ctx;
        ctx.language.language_text[8002] = QStringLiteral("connected");
        ctx.language.language_text[8600] = QStringLiteral("polling stopped");
        status::install_status_memory(ctx);
        compliance::install_compliance(ctx);
        h.connect();
        ctx.timer1.set_enabled(false);
        QCOMPARE(h.ui.connection_text, QString("polling stopped"));
        QCOMPARE(ctx.link.connection, ConnectionState::connected);

        h.ui.ok_cancel_answers << true;
        h.ui.input_answers << QStringLiteral("250");
        // Waits inside a job pass as in the event loop: ticks while Timer1 is on.
        h.clock.on_step = [&] {
            if (ctx.timer1.enabled())
                timer1_tick(ctx);
        };
        h.received.clear();
        job(ctx);
        QVERIFY(ctx.timer1.enabled());
        QVERIFY2(h.ui.connection_text.startsWith("connected"), qPrintable(h.ui.connection_text));
        for (int i = 0; i < 100 && !h.received.contains(first_command); ++i)
            h.clock.wait_ms(50);
        QVERIFY(h.received.contains(first_command));
    }

    // On every page but the developer's, where the device is opened and
    // closed by hand.
    void closed_link_reconnects_by_itself() {
        Harness h;
        h.set(&sim::Faults::unplug, true);
        connect_routine(*h.ctx); // no device: one message
        QCOMPARE(h.ui.messages.size(), 1);
        h.ui.page = Page::entwickler;
        h.set(&sim::Faults::unplug, false);
        h.tick(3);
        QCOMPARE(h.ctx->link.device_handle, 0u); // not while the link buttons are on top
        h.ui.page = Page::protokoll;
        h.tick(40);
        QVERIFY(h.ctx->link.device_handle != 0);
        QVERIFY(h.ctx->device.live_valid);
        QCOMPARE(h.ui.messages.size(), 1);
    }

    // (Older versions leave out "!" and the timings: see the version boundary.)
    void periodic_schedule_over_400_ticks() {
        Harness h("5301");
        connect_routine(*h.ctx);
        // Settle, then start the window right after a multiple of 400.
        while (h.ctx->protocol.tick_count % 400 != 0 || h.ctx->protocol.tick_count == 0)
            h.tick();
        h.received.clear();
        h.tick(400);
        QMap<QByteArray, int> sent;
        for (const QByteArray& p : h.received)
            sent[p] += 1;
        int r = 0;
        for (int i = 0; i <= 6; ++i)
            r += sent.value(cmd::read_timing(i));
        // I, T, S, operating hours, information text, timings
        QCOMPARE((QList<int>{sent.value("I"), sent.value("T"), sent.value("S"),
                             sent.value(cmd::read_hours()), sent.value("!"), r}),
                 (QList<int>{100, 50, 10, 1, 4, 7}));
        QCOMPARE(h.ctx->protocol.retry_count, 0);
    }

    // Record reads go on without waiting for the next tick: each as soon as
    // the answer before it was handled, or, once a readout has shown a slow
    // device, 20 ms after the one before.
    void compliance_reads_run_without_waiting_for_ticks_data() {
        const Table<bool, int, int> row; // paced, least and most ms waited
        row("as fast as the answers come", false, 59, 59 * 5);
        row("paced after a repetition", true, 59 * 20, 60 * 20);
    }
    void compliance_reads_run_without_waiting_for_ticks() {
        const auto [paced, least_ms, most_ms] = Table<bool, int, int>::fetch();
        Harness h;
        h.connect();
        h.received.clear();
        h.ctx->protocol.queue_count = 0;
        h.ctx->protocol.waiting_reply = false;
        h.ctx->protocol.paced_reads = paced;
        for (int n = 0; n < 60; ++n)
            queue_command(*h.ctx, cmd::compliance_record(std::uint16_t(n)));
        int nested = 0, waits = 0, waited_ms = 0;
        h.clock.on_wait = [&](int ms) {
            ++waits;
            waited_ms += ms;
            // The timer fires during the wait; the guard turns it away.
            const qint32 before = h.ctx->protocol.tick_count;
            timer1_tick(*h.ctx);
            nested += h.ctx->protocol.tick_count == before ? 1 : 0;
        };
        h.tick(2);
        QCOMPARE(h.received.count() - h.received.count("I") - h.received.count("T"), 60);
        QVERIFY(waits >= 59);
        QCOMPARE(nested, waits);
        QVERIFY2(waited_ms >= least_ms && waited_ms <= most_ms,
                 qPrintable(QString::number(waited_ms)));
        QVERIFY(h.ctx->protocol.timer_busy == false);
    }

    void log_lines_and_cut() {
        Harness h;
        h.clock.advance_ms(12340);
        log_comm(*h.ctx, "OUT", "49 ");
        QCOMPARE(h.ctx->comm_log.comm_log, QString("OUT 012.34            49 \r\n"));
        log_comm(*h.ctx, "IN", "x");
        QVERIFY(h.ctx->comm_log.comm_log.endsWith("IN  012.34            x\r\n"));
        qsizetype size = 0;
        while (h.ctx->comm_log.comm_log.size() >= size) {
            size = h.ctx->comm_log.comm_log.size();
            log_comm(*h.ctx, "ERR", QString(500, 'y'));
        }
        QVERIFY(size > 59000);
        QCOMPARE(h.ctx->comm_log.comm_log.size(), 40000);
        QVERIFY(h.ctx->comm_log.comm_log.startsWith("OUT 012.34"));

        QTemporaryDir dir;
        h.ctx->user_dir = dir.path() + "/";
        h.clock.set_now(QDateTime(QDate(2024, 1, 31), QTime(15, 45, 2), Qt::UTC));
        log_comm(*h.ctx, "OUT", "49 ");
        const QString path = cmd_saveprotokoll(*h.ctx);
        QCOMPARE(path, dir.path() + "/protokoll20240131154502.txt");
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(file.readAll()), h.ctx->comm_log.comm_log + "\r\n");

        h.ui.out = "something";
        cmd_clear(*h.ctx);
        QVERIFY(h.ui.out.isEmpty());
        QVERIFY(!h.ctx->comm_log.comm_log.isEmpty());

        cmd_sendcommand(*h.ctx, "\\x41I");
        QCOMPARE(h.ctx->protocol.send_queue[1], QByteArray("\\x41I")); // as typed
    }
};

QTEST_GUILESS_MAIN(TestPollCycle)
#include "test_poll_cycle.moc"
