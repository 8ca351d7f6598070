#include "archive/archive_event.h"

#include "compliance/compliance_days.h"
#include "report/report_file.h"
#include "report/report_measurements.h"
#include "status/status_table.h"

#include <QCryptographicHash>
#include <QLocale>
#include <QSysInfo>
#include <QUuid>

#include <algorithm>

namespace veltrako::archive {

namespace {

// The name space of the archive's content-made identities.
const QUuid id_space = QUuid::fromString(QStringLiteral("{5d0f7c8e-3b7a-4c1e-9a52-7e2f1f0b6a31}"));

QString content_id(const QString& kind, const QString& sn, const QString& content) {
    const QByteArray digest =
        QCryptographicHash::hash(content.toUtf8(), QCryptographicHash::Sha256);
    return QUuid::createUuidV5(id_space, kind + QLatin1Char('|') + sn + QLatin1Char('|') +
                                             QString::fromLatin1(digest.toHex()))
        .toString(QUuid::WithoutBraces);
}

ArchiveEvent base(const char* kind, const QString& sn, const QDateTime& at, const QString& writer) {
    ArchiveEvent e;
    e.kind = QLatin1String(kind);
    e.sn = sn.trimmed();
    e.at = at.toSecsSinceEpoch();
    e.written_by = writer;
    return e;
}

QString result_word(jobs::VisitResult r) {
    switch (r) {
    case jobs::VisitResult::written:
        return QStringLiteral("written");
    case jobs::VisitResult::failed:
        return QStringLiteral("failed");
    case jobs::VisitResult::cancelled:
        return QStringLiteral("cancelled");
    }
    return {};
}

} // namespace

QString this_user() {
    QString user = qEnvironmentVariable("USER");
    if (user.isEmpty())
        user = qEnvironmentVariable("USERNAME");
    return user.isEmpty() ? QStringLiteral("unknown") : user;
}

QString this_writer() {
    return this_user() + QLatin1Char('@') + QSysInfo::machineHostName();
}

StatusEntry status_entry(const QByteArray& record, bool extended) {
    StatusEntry s;
    s.entry = status::format_status_line(record, extended, QLocale::c()).simplified();
    const auto byte = [&](int n) {
        return n <= record.size() ? static_cast<unsigned char>(record.at(n - 1)) : 0;
    };
    s.block = byte(1);
    s.duration = byte(2) * 256 + byte(3);
    s.record_hex = QString::fromLatin1(record.toHex());
    return s;
}

QString entry_from_table_line(const QString& line) {
    // The table's numbers carry no group separators; only the decimal comma
    // of some locales differs from the C locale's point.
    QString entry = line.simplified();
    entry.replace(QLatin1Char(','), QLatin1Char('.'));
    return entry;
}

QString usage_event_id(const QString& sn,
                       const std::vector<compliance::ComplianceRecord>& periods) {
    std::vector<compliance::ComplianceRecord> kept;
    for (const compliance::ComplianceRecord& p : periods)
        if (p.start != 0 && p.end != 0 && p.end >= p.start)
            kept.push_back(p);
    std::sort(kept.begin(), kept.end(), [](const auto& a, const auto& b) {
        return a.start != b.start ? a.start < b.start : a.end < b.end;
    });
    kept.erase(std::unique(kept.begin(), kept.end()), kept.end());
    QString content;
    for (const compliance::ComplianceRecord& p : kept)
        content += QString::number(p.start) + QLatin1Char('-') + QString::number(p.end) +
                   QLatin1Char('\n');
    return content_id(QLatin1String(kind_usage), sn, content);
}

QString status_event_id(const QString& sn, const std::vector<StatusEntry>& entries) {
    QString content;
    for (const StatusEntry& s : entries)
        content += s.entry + QLatin1Char('\n');
    return content_id(QLatin1String(kind_status), sn, content);
}

QString report_event_id(const QString& sn, const QStringList& lines) {
    return content_id(QLatin1String(kind_report), sn, lines.join(QLatin1Char('\n')));
}

QString visit_event_id(const QString& sn, const QString& folder_name, const QDateTime& began) {
    return content_id(QLatin1String(kind_visit), sn,
                      folder_name + QLatin1Char('|') +
                          began.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
}

QString fresh_event_id() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

QString readout_adherence(const jobs::UsageReadout& r) {
    std::vector<compliance::Period> all;
    compliance::Stamp running_end = 0;
    for (const compliance::ComplianceRecord& p : r.periods) {
        if (p.start != 0 && p.end != 0 && p.start < p.end)
            all.push_back({p.start, p.end});
        if (r.running_start != 0 && p.start == r.running_start)
            running_end = p.end;
    }
    const auto window = compliance::best_window(all, compliance::counted_days(all, running_end),
                                                r.prescribed_hours, r.adherence_share);
    return window ? compliance::adherence_line(*window) : QString();
}

ArchiveEvent usage_event(const jobs::UsageReadout& r, const QString& writer) {
    ArchiveEvent e = base(kind_usage, r.sn, r.at, writer);
    e.lp = r.lp;
    e.periods = r.periods;
    e.running_start = r.running_start;
    e.adherence = readout_adherence(r);
    e.source = QStringLiteral("device");
    e.id = usage_event_id(e.sn, e.periods);
    return e;
}

ArchiveEvent status_event(const jobs::StatusReadout& r, const QString& writer) {
    ArchiveEvent e = base(kind_status, r.sn, r.at, writer);
    e.lp = r.lp;
    e.sw = r.sw.trimmed();
    e.extended = r.extended;
    for (const QByteArray& record : r.records)
        e.entries.push_back(status_entry(record, r.extended));
    e.source = QStringLiteral("device");
    e.id = status_event_id(e.sn, e.entries);
    return e;
}

QString inspector_of(const QStringList& report_lines) {
    for (const QString& line : report_lines)
        if (line.startsWith(QLatin1String("t_Pruefer|"), Qt::CaseInsensitive))
            return line.mid(10).trimmed();
    return {};
}

std::optional<ReportMeasured> report_measured(const QStringList& report_lines) {
    const QString result_key = QLatin1String(report::key_result) + QLatin1Char('|');
    if (std::none_of(report_lines.begin(), report_lines.end(),
                     [&](const QString& line) { return line.startsWith(result_key); }))
        return std::nullopt;
    report::ReportRecord record;
    report::read_report_lines(record, report_lines);
    record.report_device.live_valid = true; // as opening the file does
    const report::Judgement j = report::judge_report(record, record.limits);
    ReportMeasured m;
    m.result = report::result_word(j.result);
    m.protection_class = j.protection_class == report::ProtectionClass::i    ? QStringLiteral("I")
                         : j.protection_class == report::ProtectionClass::ii ? QStringLiteral("II")
                                                                             : QString();
    m.o2 = j.o2.value;
    m.o2_limit = j.o2.low;
    m.o2_verdict = report::verdict_word(j.o2.verdict);
    m.o2_device = j.device_o2;
    m.o2_note = j.o2_deviation.has_value();
    m.flow = j.flow.value;
    m.flow_set = j.set_flow;
    m.flow_low = j.flow.low;
    m.flow_high = j.flow.high;
    m.flow_verdict = report::verdict_word(j.flow.verdict);
    m.earth = j.earth.value;
    m.earth_limit = j.earth.high;
    m.earth_verdict = report::verdict_word(j.earth.verdict);
    m.leakage = j.leakage.value;
    m.leakage_limit = j.leakage.high;
    m.leakage_verdict = report::verdict_word(j.leakage.verdict);
    m.instruments = record.value(QLatin1String(report::key_instruments));
    return m;
}

ArchiveEvent report_event(const jobs::ReportFiled& r, const QString& writer) {
    ArchiveEvent e = base(kind_report, r.sn, r.at, writer);
    e.values = r.lines;
    e.path = r.path;
    e.printed = r.printed;
    e.inspector = inspector_of(r.lines);
    e.measured = report_measured(r.lines);
    for (const QString& line : r.lines)
        if (line.startsWith(QLatin1String("LP|")))
            e.lp = line.mid(3);
    e.id = report_event_id(e.sn, r.lines);
    return e;
}

ArchiveEvent visit_event(const jobs::VisitDone& r, const QString& writer) {
    ArchiveEvent e = base(kind_visit, r.sn, r.at, writer);
    e.values = r.snapshot;
    for (const QString& line : r.snapshot)
        if (line.startsWith(QLatin1String("LP|")))
            e.lp = line.mid(3);
    e.folder = r.folder;
    e.result = result_word(r.result);
    e.reason = r.reason;
    const qsizetype slash = r.folder.lastIndexOf(QLatin1Char('/'));
    e.id = visit_event_id(e.sn, slash < 0 ? r.folder : r.folder.mid(slash + 1), r.at);
    return e;
}

ArchiveEvent firmware_event(const jobs::FirmwareUpdate& r, const QString& writer) {
    ArchiveEvent e = base(kind_firmware, r.sn, r.at, writer);
    e.old_value = r.old_version.trimmed();
    e.new_value = r.new_version.trimmed();
    e.result = r.ok ? QStringLiteral("ok") : QStringLiteral("failed");
    e.reason = r.reason;
    e.id = fresh_event_id();
    return e;
}

ArchiveEvent write_event(const jobs::DeviceWrite& r, const QString& writer) {
    ArchiveEvent e = base(kind_write, r.sn, r.at, writer);
    e.setting = r.setting;
    e.old_value = r.old_value;
    e.new_value = r.new_value;
    e.pc_user = this_user();
    e.inspector = r.inspector;
    e.id = fresh_event_id();
    return e;
}

} // namespace veltrako::archive
