#include "archive/archive_import.h"

#include "compliance/compliance_file.h"
#include "config/key_value_lines.h"
#include "config/text_file.h"
#include "report/report_record.h"
#include "status/status_table_reader.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QRegularExpression>

#include <algorithm>
#include <functional>
#include <memory>

namespace veltrako::archive {

namespace {

const QString visit_file_name = QStringLiteral("Besuch.txt");

QString key_of(const QString& line) {
    const qsizetype bar = line.indexOf(QLatin1Char('|'));
    return bar < 0 ? QString() : line.left(bar);
}

QString value_of(const QStringList& lines, const QString& key) {
    for (const QString& line : lines)
        if (key_of(line) == key)
            return line.mid(key.size() + 1);
    return {};
}

// The serial number in a visit folder's name: "<SN>_<yyyy-mm-dd>", maybe
// with "_2", "_3" for later visits of the day, and "_unvollstaendig" while
// the visit is not complete (what it wrote is the device's all the same).
QString serial_from_folder_name(const QString& name) {
    static const QRegularExpression form(
        QStringLiteral(R"(^(.+)_\d{4}-\d{2}-\d{2}(_\d+)?(_unvollstaendig)?$)"));
    return form.match(name).captured(1);
}

// "yyyymmdd_hhnnss" in a file name the program proposed.
QDateTime time_from_file_name(const QString& name) {
    static const QRegularExpression form(QStringLiteral(R"((\d{8}_\d{6}))"));
    const QRegularExpressionMatch m = form.match(name);
    return m.hasMatch() ? QDateTime::fromString(m.captured(1), QStringLiteral("yyyyMMdd_HHmmss"))
                        : QDateTime();
}

QDateTime file_time(const QString& path) {
    const QDateTime named = time_from_file_name(QFileInfo(path).fileName());
    return named.isValid() ? named : QFileInfo(path).lastModified();
}

ArchiveEvent event_of(const char* kind, const QString& sn, const QDateTime& at,
                      const QString& writer, const QString& visit_id, const QString& source) {
    ArchiveEvent e;
    e.kind = QLatin1String(kind);
    e.sn = sn.trimmed();
    e.at = at.toSecsSinceEpoch();
    e.written_by = writer;
    e.visit_id = visit_id;
    e.source = source;
    return e;
}

std::optional<ArchiveEvent> visit_of(const QString& path, const QStringList& lines,
                                     const QString& writer) {
    const QString sn = value_of(lines, QStringLiteral("SN")).trimmed();
    const QDateTime began =
        QDateTime::fromString(value_of(lines, QStringLiteral("DATUM")) + QLatin1Char(' ') +
                                  value_of(lines, QStringLiteral("UHRZEIT")),
                              QStringLiteral("dd.MM.yyyy HH:mm:ss"));
    if (sn.isEmpty() || !began.isValid())
        return std::nullopt;
    const QFileInfo info(path);
    ArchiveEvent e = event_of(kind_visit, sn, began, writer, {}, path);
    e.lp = value_of(lines, QStringLiteral("LP"));
    for (const QString& key :
         {QStringLiteral("SN"), QStringLiteral("LP"), QStringLiteral("SW"), QStringLiteral("BSTD")})
        e.values << key + QLatin1Char('|') + value_of(lines, key);
    e.folder = info.absolutePath();
    e.result = QStringLiteral("written"); // the file is the visit's last
    e.id = visit_event_id(sn, info.absoluteDir().dirName(), began);
    return e;
}

bool is_report(const QStringList& lines) {
    for (const QString& line : lines)
        if (report::report_key_index(key_of(line)) > 0)
            return true;
    return false;
}

} // namespace

ImportedFile read_import_lines(const QString& path, const QStringList& lines,
                               const QString& folder_sn, const QString& visit_id,
                               const QString& sn_option, const QString& writer, bool named) {
    ImportedFile f;
    f.path = path;
    const QFileInfo info(path);
    if (info.fileName().compare(visit_file_name, Qt::CaseInsensitive) == 0) {
        if (auto visit = visit_of(path, lines, writer))
            f.events.push_back(std::move(*visit));
        else
            f.error = QStringLiteral("no serial number, date or time in the visit file");
        return f;
    }
    if (const auto table = status::read_status_table(lines)) {
        ArchiveEvent e = event_of(kind_status, table->sn, table->at, writer, visit_id, path);
        e.lp = table->lp;
        e.sw = table->sw;
        e.extended = table->extended;
        for (const QString& line : table->record_lines) {
            const QStringList fields = line.simplified().split(QLatin1Char(' '));
            e.entries.push_back(
                {entry_from_table_line(line), fields[0].toInt(), fields[1].toInt(), QString()});
        }
        e.id = status_event_id(e.sn, e.entries);
        f.events.push_back(std::move(e));
        return f;
    }
    if (is_report(lines)) {
        const QString sn = value_of(lines, QStringLiteral("SN")).trimmed();
        if (sn.isEmpty()) {
            f.error = QStringLiteral("the report names no serial number");
            return f;
        }
        QDateTime at =
            QDateTime::fromString(value_of(lines, QStringLiteral("t_Datum")) + QLatin1Char(' ') +
                                      value_of(lines, QStringLiteral("t_Uhrzeit")),
                                  QStringLiteral("dd.MM.yyyy HH:mm:ss"));
        if (!at.isValid())
            at = file_time(path);
        ArchiveEvent e = event_of(kind_report, sn, at, writer, visit_id, path);
        e.lp = value_of(lines, QStringLiteral("LP"));
        e.values = lines;
        e.path = path;
        e.inspector = inspector_of(lines);
        e.measured = report_measured(lines);
        e.id = report_event_id(sn, lines);
        f.events.push_back(std::move(e));
        return f;
    }
    auto records = std::make_unique<compliance::ComplianceRecords>();
    const compliance::LoadedLines loaded =
        compliance::read_compliance_lines(lines, *records, QLocale());
    const bool any_line = std::any_of(lines.begin(), lines.end(),
                                      [](const QString& l) { return !l.trimmed().isEmpty(); });
    if (!loaded.ok || !any_line) {
        if (named)
            f.error = loaded.ok ? QStringLiteral("empty, or no file the archive knows")
                                : QStringLiteral("not a file the archive knows (line \"%1\")")
                                      .arg(loaded.bad_line.left(80));
        return f;
    }
    QString sn = serial_from_folder_name(info.absoluteDir().dirName());
    if (!folder_sn.isEmpty())
        sn = folder_sn;
    if (sn.isEmpty())
        sn = compliance::serial_from_file_name(info.fileName());
    if (sn.isEmpty())
        sn = sn_option;
    if (sn.trimmed().isEmpty()) {
        f.error = QStringLiteral("a compliance file names no device: its serial number comes from"
                                 " the visit folder, the file name (Compliance_<SN>_...) or --sn");
        return f;
    }
    ArchiveEvent e = event_of(kind_usage, sn, file_time(path), writer, visit_id, path);
    for (const compliance::ComplianceRecord& r : *records)
        if (r.start != 0)
            e.periods.push_back(r);
    e.id = usage_event_id(e.sn, e.periods);
    f.events.push_back(std::move(e));
    return f;
}

std::vector<ImportedFile> read_import(const ImportRequest& request) {
    std::vector<ImportedFile> files;
    const auto read_one = [&](const QString& path, const QString& folder_sn,
                              const QString& visit_id, bool named) {
        const std::optional<QStringList> lines = config::read_text_lines(path);
        if (!lines) {
            files.push_back({path, {}, QStringLiteral("cannot be read")});
            return;
        }
        ImportedFile f =
            read_import_lines(path, *lines, folder_sn, visit_id, request.sn, request.writer, named);
        if (!f.events.empty() || !f.error.isEmpty())
            files.push_back(std::move(f));
    };
    std::function<void(const QString&)> read_folder = [&](const QString& folder) {
        const QDir dir(folder);
        // The visit's own file first: it names the device and the visit the
        // other files belong to.
        QString folder_sn, visit_id;
        const QString visit_path = dir.filePath(visit_file_name);
        if (QFileInfo::exists(visit_path)) {
            read_one(visit_path, {}, {}, true);
            if (!files.empty() && files.back().path == visit_path && !files.back().events.empty()) {
                folder_sn = files.back().events.front().sn;
                visit_id = files.back().events.front().id;
            }
        }
        const QFileInfoList entries =
            dir.entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
        for (const QFileInfo& entry : entries) {
            if (entry.isDir())
                read_folder(entry.absoluteFilePath());
            else if (entry.fileName().compare(visit_file_name, Qt::CaseInsensitive) != 0 &&
                     entry.suffix().compare(QLatin1String("txt"), Qt::CaseInsensitive) == 0)
                read_one(entry.absoluteFilePath(), folder_sn, visit_id, false);
        }
    };
    for (const QString& path : request.paths) {
        const QFileInfo info(path);
        if (info.isDir())
            read_folder(info.absoluteFilePath());
        else if (!info.exists())
            files.push_back({path, {}, QStringLiteral("no such file or folder")});
        else
            read_one(info.absoluteFilePath(), {}, {}, true);
    }
    return files;
}

} // namespace veltrako::archive
