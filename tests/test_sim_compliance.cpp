// The usage memory: the count, the records, the period in progress as the
// last record, the ring's wrap at its size, and erasing.

#include "sim_helpers.h"

#include <QTest>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

struct Record {
    quint32 start, end;
    bool operator==(const Record&) const = default;
};

quint32 be32(const QByteArray& p, int position) {
    quint32 v = 0;
    for (int i = 0; i < 4; ++i)
        v = v << 8 | static_cast<unsigned char>(p.at(position - 1 + i));
    return v;
}

int count(DirectDevice& d) {
    const QByteArray p = d.answer("K");
    return static_cast<unsigned char>(p.at(1)) * 256 + static_cast<unsigned char>(p.at(2));
}

Record record(DirectDevice& d, int n) {
    const QByteArray p = d.answer(bytes_of({'k', n >> 8, n & 0xFF}));
    if (p.size() != 11 || p.left(3) != bytes_of({'k', n >> 8, n & 0xFF}))
        qFatal("bad k answer %s", p.toHex(' ').constData());
    return {be32(p, 4), be32(p, 8)};
}

quint32 seconds(QDate date, QTime time) {
    return static_cast<quint32>(
        QDateTime(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC).secsTo(QDateTime(date, time, Qt::UTC)));
}

constexpr quint32 erased = 0xFFFFFFFF;

} // namespace

class TestSimCompliance : public QObject {
    Q_OBJECT
private slots:
    void records_then_the_running_period() {
        DirectDevice d(scenario_from("CLOCK=2026-03-02 09:30:00\n"
                                     "COMPLIANCE_RECORD=2026-02-27 07:10:00 / 2026-02-27 18:45:30\n"
                                     "COMPLIANCE_RECORD=-\n"
                                     "COMPLIANCE_RECORD=2026-03-01 08:00 / 2026-03-01 21:00\n"));
        QCOMPARE(count(d), 3);
        QCOMPARE(record(d, 0),
                 (Record{seconds({2026, 2, 27}, {7, 10}), seconds({2026, 2, 27}, {18, 45, 30})}));
        QCOMPARE(record(d, 1), (Record{erased, erased}));
        QCOMPARE(record(d, 2),
                 (Record{seconds({2026, 3, 1}, {8, 0}), seconds({2026, 3, 1}, {21, 0})}));
        // Record `count` is the period in progress: since power-on, until now.
        d.now = 65 * 1000;
        QCOMPARE(record(d, 3),
                 (Record{seconds({2026, 3, 2}, {9, 30}), seconds({2026, 3, 2}, {9, 31, 5})}));
        d.now = 125 * 1000;
        QCOMPARE(record(d, 3).end, seconds({2026, 3, 2}, {9, 32, 5}));
        // Past it, the ring is erased.
        QCOMPARE(record(d, 4), (Record{erased, erased}));
    }

    void an_empty_memory_has_only_the_running_period() {
        DirectDevice d(scenario_from("CLOCK=2026-03-02 09:30:00\n"));
        QCOMPARE(count(d), 0);
        QCOMPARE(record(d, 0).start, seconds({2026, 3, 2}, {9, 30}));
    }

    void generated_records_lie_in_their_range() {
        DirectDevice d(scenario_from("CLOCK=2026-03-02 09:30:00\nCOMPLIANCE_GENERATE=60\n"
                                     "COMPLIANCE_FROM=2026-01-01\nCOMPLIANCE_TO=2026-03-01\n"));
        QCOMPARE(count(d), 60);
        quint32 previous_end = seconds({2026, 1, 1}, {0, 0});
        for (int n = 0; n < 60; ++n) {
            const Record r = record(d, n);
            QVERIFY(r.start >= previous_end);
            QVERIFY(r.end > r.start);
            previous_end = r.end;
        }
        QVERIFY(previous_end <= seconds({2026, 3, 1}, {0, 0}));
    }

    // A request for n returns slot n mod size: record `size` is record 0
    // again. Once more records were written than the ring holds, the oldest
    // are overwritten, and the program, reading up to the count, meets the
    // repetition.
    void ring_wrap_data() {
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("written");
        QTest::addColumn<bool>("wrapped");
        QTest::newRow("256 slots, 300 records") << 256 << 300 << true;
        QTest::newRow("256 slots, 100 records") << 256 << 100 << false;
        QTest::newRow("256 slots, 257 records") << 256 << 257 << true;
        QTest::newRow("4096 slots, 5000 records") << 4096 << 5000 << true;
    }
    void ring_wrap() {
        QFETCH(int, size);
        QFETCH(int, written);
        QFETCH(bool, wrapped);
        const QByteArray text =
            "CLOCK=2026-03-02 09:30:00\nCOMPLIANCE_RING_SIZE=" + QByteArray::number(size) +
            "\nCOMPLIANCE_GENERATE=" + QByteArray::number(written) +
            "\nCOMPLIANCE_FROM=2010-01-01\nCOMPLIANCE_TO=2026-03-01\n";
        DirectDevice d(scenario_from(text));
        QCOMPARE(count(d), written);
        const Record first = record(d, 0);
        QCOMPARE(record(d, size), first);
        QCOMPARE(record(d, 2 * size + 1), record(d, 1));
        const Record last_slot = record(d, size - 1);
        if (wrapped) {
            // Slot 0 holds record number `size`, newer than the last slot's.
            QVERIFY(first.start > last_slot.start);
            QVERIFY(last_slot.start != erased);
        } else {
            QCOMPARE(last_slot, (Record{erased, erased}));
            QVERIFY(first.start < record(d, written - 1).start);
        }
        // The period in progress stands in slot `written` mod size.
        QCOMPARE(record(d, written).start, seconds({2026, 3, 2}, {9, 30}));
    }

    void erase_empties_the_ring() {
        DirectDevice d(scenario_from("CLOCK=2026-03-02 09:30:00\nCOMPLIANCE_GENERATE=10\n"
                                     "COMPLIANCE_FROM=2026-02-01\nCOMPLIANCE_TO=2026-03-01\n"));
        d.now = 30 * 1000;
        QCOMPARE(d.answer("Z"), QByteArray("Z"));
        QCOMPARE(count(d), 0);
        // A new period starts with the erase.
        QCOMPARE(record(d, 0).start, seconds({2026, 3, 2}, {9, 30, 30}));
        for (int n = 1; n <= 10; ++n)
            QCOMPARE(record(d, n), (Record{erased, erased}));
    }
};

QTEST_GUILESS_MAIN(TestSimCompliance)
#include "test_sim_compliance.moc"
