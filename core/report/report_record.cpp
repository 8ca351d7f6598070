#include "report/report_record.h"

namespace veltrako::report {

const QStringList& report_keys() {
    static const QStringList keys{
        QString(),
        QStringLiteral("t_Krankenkasse"),
        QStringLiteral("t_Patient"),
        QStringLiteral("t_Strasse"),
        QStringLiteral("t_Ort"),
        QStringLiteral("t_Telefon"),
        QStringLiteral("t_Pruefer"),
        QStringLiteral("t_Datum"),
        QStringLiteral("t_Uhrzeit"),
        QStringLiteral("ck_Selbsttest"),
        QStringLiteral("ck_Ansaugtest"),
        QStringLiteral("ck_Maxflow"),
        QStringLiteral("ck_Minflow"),
        QStringLiteral("ck_Visuell"),
        QStringLiteral("ck_Leistung"),
        QStringLiteral("ck_Typenschild"),
        QStringLiteral("ck_stk"),
        QStringLiteral("t_Bemerkungen"),
        QStringLiteral("t_Zubehoer"),
        // Measured during the inspection; files before them open as before.
        QStringLiteral("m_O2"),
        QStringLiteral("m_Flow"),
        QStringLiteral("t_Schutzklasse"),
        QStringLiteral("m_Schutzleiter"),
        QStringLiteral("m_Ableitstrom"),
        QStringLiteral("t_Messgeraet"),
    };
    return keys;
}

int report_key_index(const QString& key) {
    if (key.isEmpty())
        return 0;
    const QStringList& keys = report_keys();
    for (qsizetype i = 1; i < keys.size(); ++i)
        if (keys[i].compare(key, Qt::CaseInsensitive) == 0)
            return static_cast<int>(i);
    return 0;
}

FieldKind field_kind(const QString& key) {
    return key.section(QLatin1Char('_'), 0, 0).compare(QLatin1String("ck"), Qt::CaseInsensitive) ==
                   0
               ? FieldKind::check
               : FieldKind::text;
}

QString ReportRecord::value(const QString& key) const {
    const int i = report_key_index(key);
    return i == 0 ? QString() : report_values[static_cast<std::size_t>(i)];
}

void ReportRecord::set_value(const QString& key, const QString& value) {
    if (const int i = report_key_index(key))
        report_values[static_cast<std::size_t>(i)] = value;
}

void take_snapshot(ReportRecord& report, const device::DeviceRecord& device, bool clear_fields) {
    if (device.live_valid)
        report.report_device = device;
    else
        device::clear_device_record(report.report_device);
    if (clear_fields)
        report.report_values.fill(QString());
    report.report_changed = false;
}

void refresh_report_device(ReportRecord& report, const device::DeviceRecord& device) {
    // Deliberately unlike a snapshot: without live data (a lost connection,
    // the search for the device going on) the report keeps the device data
    // it has, so that the report being typed can still be saved.
    if (device.live_valid)
        report.report_device = device;
}

QString other_device_note(const ReportRecord& report, const device::DeviceRecord& connected,
                          const config::LanguageTables& language) {
    const QString report_sn = report.report_device.SN.trimmed();
    const QString connected_sn = connected.SN.trimmed();
    if (!report.device_valid() || !connected.live_valid || report_sn.isEmpty() ||
        connected_sn.isEmpty() || report_sn == connected_sn)
        return {};
    return language.text(8200) + QLatin1Char(' ') + report_sn + QLatin1Char(' ') +
           language.text(8201) + QLatin1Char(' ') + connected_sn;
}

void set_report_defaults(ReportRecord& report, const QDateTime& now) {
    report.set_value(QStringLiteral("t_Datum"), now.toString(QStringLiteral("dd.MM.yyyy")));
    report.set_value(QStringLiteral("t_Uhrzeit"), now.toString(QStringLiteral("HH:mm:ss")));
}

QString check_value(bool checked) {
    return checked ? QStringLiteral("1") : QStringLiteral("0");
}

std::optional<bool> check_state(const QString& value) {
    QString text = value.trimmed();
    // An emptied report must not keep the ticks of the one before it.
    if (text.isEmpty())
        return false;
    text.replace(QLatin1Char('.'), QLatin1Char(','));
    bool ok = false;
    const double v = QLocale(QLocale::German).toDouble(text, &ok);
    if (!ok)
        return std::nullopt;
    if (v == 0)
        return false;
    if (v == 1)
        return true;
    return std::nullopt;
}

std::vector<ShownField> report_view(const ReportRecord& report) {
    std::vector<ShownField> rows;
    const QStringList& keys = report_keys();
    for (qsizetype i = 1; i < keys.size(); ++i) {
        ShownField row;
        row.key = keys[i];
        row.kind = field_kind(keys[i]);
        const QString& v = report.report_values[static_cast<std::size_t>(i)];
        if (row.kind == FieldKind::text)
            row.text = v;
        else
            row.checked = check_state(v);
        rows.push_back(row);
    }
    return rows;
}

} // namespace veltrako::report
