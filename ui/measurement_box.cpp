#include "measurement_box.h"

#include "app_context.h"
#include "controls.h"
#include "frm_main.h"
#include "report/report_measurements.h"
#include "report_page.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QToolTip>
#include <QValidator>

#include <algorithm>
#include <cstring>

namespace veltrako::ui {

namespace {

// Language texts of what a box takes.
constexpr int text_takes_number = 8911;
constexpr int text_takes_class = 8912;
constexpr int text_result = 8904;

// Text colours of the verdicts: a darker green than the lamps', which is
// readable as text on the page's grey.
const QString pass_style = QStringLiteral("color: rgb(0, 130, 0); font-weight: bold;");
const QString fail_style = QStringLiteral("color: rgb(220, 0, 0); font-weight: bold;");
const QString refused_style = QStringLiteral("QLineEdit { border: 2px solid rgb(255, 0, 0); }");
// Set on a box while its last input was refused.
constexpr char refused_property[] = "Refused";

// The measured values judged against a limit: key, caption tag and text, unit.
struct Row {
    const char* key;
    int tag;
    const char* caption;
    const char* unit;
};
constexpr Row judged_rows[] = {
    {report::key_o2, 11251, "O2-Konzentration", "%"},
    {report::key_flow, 11252, "Flow", "l/min"},
    {report::key_earth, 11254, "Schutzleiterwiderstand", "\u03a9"},
    {report::key_leakage, 11255, "Ableitstrom", "mA"},
};

// Takes what is a number or the start of one, or a protection class.
class MeasurementValidator final : public QValidator {
public:
    MeasurementValidator(bool protection_class, QObject* parent)
        : QValidator(parent), class_(protection_class) {}
    State validate(QString& input, int&) const override {
        if (class_) {
            input = input.toUpper();
            if (!report::could_become_protection_class(input))
                return Invalid;
            return report::parse_protection_class(input) == report::ProtectionClass::unknown
                       ? Intermediate
                       : Acceptable;
        }
        if (!report::could_become_measurement(input))
            return Invalid;
        return report::parse_measurement(input) ? Acceptable : Intermediate;
    }

private:
    bool class_;
};

QString key_of(const char* key) {
    return QLatin1String(key);
}

bool holds_class(const QLineEdit* box) {
    return box->objectName() == key_of(report::key_protection_class);
}

// A box's text is what it may hold: empty, a number (or the start of one),
// a protection class.
bool acceptable(const QLineEdit* box) {
    return holds_class(box) ? report::could_become_protection_class(box->text())
                            : report::could_become_measurement(box->text());
}

QString why_refused(const QLineEdit* box, const AppContext& ctx) {
    return ctx.language.text(holds_class(box) ? text_takes_class : text_takes_number);
}

// The red frame, and the tooltip that says what the box takes.
void mark_refused(QLineEdit* box, bool refused, const AppContext& ctx) {
    box->setStyleSheet(refused ? refused_style : QString());
    box->setToolTip(refused ? why_refused(box, ctx) : QString());
}

void show_verdict(FrmMain& form, const char* key, const report::Judged& judged,
                  const AppContext& ctx) {
    const QString name = key_of(key);
    auto* verdict =
        form.control_as<QLabel>(QStringLiteral("lbl_") + name + QStringLiteral("_bewertung"));
    verdict->setText(report::verdict_text(judged.verdict, ctx.language));
    verdict->setStyleSheet(judged.verdict == report::Verdict::pass   ? pass_style
                           : judged.verdict == report::Verdict::fail ? fail_style
                                                                     : QString());
    form.control_as<QLabel>(QStringLiteral("lbl_") + name + QStringLiteral("_grenze"))
        ->setText(report::limit_caption(judged, QLocale()));
}

} // namespace

QGroupBox* build_measurement_box() {
    QGroupBox* box =
        make_frame(QStringLiteral("frm_messungen"), 11250, QStringLiteral("Messwerte"));
    auto* grid = new QGridLayout(box);
    grid->setVerticalSpacing(4);
    const auto caption = [](const char* key, int tag, const char* text) {
        return make_label(QStringLiteral("lbl_") + key_of(key), tag, QString::fromUtf8(text));
    };
    const auto value_box = [&](const char* key) {
        QLineEdit* line = make_box(key_of(key), false);
        // Room for "100,05" and no more: the number, not a sentence.
        fit_to_text(line, QStringLiteral("100,055"));
        line->setFixedWidth(std::max(line->minimumWidth(), line->minimumSizeHint().width()));
        line->setValidator(new MeasurementValidator(false, line));
        return line;
    };
    int row = 0;
    for (const Row& r : judged_rows) {
        if (std::strcmp(r.key, report::key_earth) == 0) {
            // The protection class decides whether the protective earth is
            // measured and which leakage limit holds: it comes before both.
            grid->addWidget(caption(report::key_protection_class, 11253, "Schutzklasse"), row, 0);
            QLineEdit* klass = make_box(key_of(report::key_protection_class), false);
            fit_to_text(klass, QStringLiteral("IIW"));
            klass->setFixedWidth(std::max(klass->minimumWidth(), klass->minimumSizeHint().width()));
            klass->setValidator(new MeasurementValidator(true, klass));
            grid->addWidget(klass, row, 1);
            grid->addWidget(make_label(QStringLiteral("lbl_t_Schutzklasse_hinweis"), 0,
                                       QStringLiteral("I / II")),
                            row++, 2, 1, 2);
        }
        grid->addWidget(caption(r.key, r.tag, r.caption), row, 0);
        grid->addWidget(value_box(r.key), row, 1);
        grid->addWidget(
            make_label(QStringLiteral("lbl_") + key_of(r.key) + QStringLiteral("_einheit"), 0,
                       QString::fromUtf8(r.unit)),
            row, 2);
        QLabel* limit = make_label(
            QStringLiteral("lbl_") + key_of(r.key) + QStringLiteral("_grenze"), 0, QString());
        limit->setStyleSheet(QStringLiteral("color: rgb(90, 90, 90);"));
        grid->addWidget(limit, row, 3);
        grid->addWidget(
            make_label(QStringLiteral("lbl_") + key_of(r.key) + QStringLiteral("_bewertung"), 0,
                       QString()),
            row++, 4);
    }
    grid->addWidget(caption(report::key_instruments, 11256, "Messgeräte"), row, 0);
    grid->addWidget(make_box(key_of(report::key_instruments), false), row++, 1, 1, 4);

    QLabel* result = make_label(QStringLiteral("lbl_ergebnis"), 0, QString());
    grid->addWidget(result, row++, 0, 1, 5);
    QLabel* note = make_label(QStringLiteral("lbl_o2_hinweis"), 0, QString());
    note->setWordWrap(true);
    note->setStyleSheet(QStringLiteral("color: rgb(170, 90, 0); font-weight: bold;"));
    note->hide();
    grid->addWidget(note, row++, 0, 1, 5);
    grid->setColumnStretch(4, 1);
    return box;
}

void show_judgement(FrmMain& form, const AppContext& ctx) {
    // Judged on a copy: the page's controls are what counts while typing,
    // and the report itself is collected only when it is saved or kept.
    report::ReportRecord shown = ctx.report;
    report::collect_report(shown,
                           [&](const QString& key) { return read_report_control(form, key); });
    const report::Judgement j = report::judge_report(shown, shown.limits);
    show_verdict(form, report::key_o2, j.o2, ctx);
    show_verdict(form, report::key_flow, j.flow, ctx);
    show_verdict(form, report::key_earth, j.earth, ctx);
    show_verdict(form, report::key_leakage, j.leakage, ctx);
    // Protection class II has no protective earth to measure.
    form.control(key_of(report::key_earth))
        ->setEnabled(j.protection_class != report::ProtectionClass::ii);

    auto* result = form.control_as<QLabel>(QStringLiteral("lbl_ergebnis"));
    result->setText(ctx.language.text(text_result) + QStringLiteral(": ") +
                    report::result_text(j.result, ctx.language));
    result->setStyleSheet(j.result == report::Result::pass ? pass_style
                          : j.result == report::Result::fail
                              ? fail_style
                              : QStringLiteral("font-weight: bold;"));
    auto* note = form.control_as<QLabel>(QStringLiteral("lbl_o2_hinweis"));
    note->setText(report::o2_sensor_note(j, ctx.language, QLocale()));
    note->setVisible(!note->text().isEmpty());

    // What a file brought that is no number is shown as refused.
    for (const QString& key :
         {key_of(report::key_o2), key_of(report::key_flow), key_of(report::key_protection_class),
          key_of(report::key_earth), key_of(report::key_leakage)}) {
        auto* box = form.control_as<QLineEdit>(key);
        mark_refused(box, box->property(refused_property).toBool() || !acceptable(box), ctx);
    }
}

void bind_measurement_box(FrmMain& form, AppContext& ctx) {
    for (const QString& key : {key_of(report::key_o2), key_of(report::key_flow),
                               key_of(report::key_protection_class), key_of(report::key_earth),
                               key_of(report::key_leakage), key_of(report::key_instruments)}) {
        auto* box = form.control_as<QLineEdit>(key);
        // A keystroke that cannot make a number is refused at once, and the
        // box says why until its text changes again.
        QObject::connect(box, &QLineEdit::inputRejected, box, [box, &ctx] {
            box->setProperty(refused_property, true);
            mark_refused(box, true, ctx);
            if (box->isVisible())
                QToolTip::showText(box->mapToGlobal(QPoint(0, box->height())),
                                   why_refused(box, ctx), box);
        });
        QObject::connect(box, &QLineEdit::textChanged, &form, [box, &form, &ctx] {
            box->setProperty(refused_property, false);
            show_judgement(form, ctx);
        });
    }
}

} // namespace veltrako::ui
