#pragma once
// The main window bound to a fake link and a clock moved by hand, for the
// window tests that click, type and read controls, and answer modal windows.

#include "app_context.h"
#include "box_answers.h"
#include "fake_link.h"
#include "frm_main.h"
#include "manual_clock.h"
#include "table.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include <functional>

namespace veltrako::testing {

struct Window {
    Window() { form.bind(ctx); }
    explicit Window(QDateTime start) : clock(std::move(start)) { form.bind(ctx); }
    template <class T = QWidget> T* get(const QString& name, int index = -1) const {
        return form.control_as<T>(name, index);
    }
    QColor colour(const QString& name) const {
        return form.control(name)->palette().color(QPalette::Window);
    }

    ManualClock clock;
    ui::FrmMain form;
    FakeLink* link = new FakeLink;
    AppContext ctx{clock, form, std::unique_ptr<link::DeviceLink>(link)};
};

// Runs `inspect` on the next modal window once it is open.
inline void when_modal(std::function<void(QWidget*)> inspect) {
    QTimer::singleShot(0, [inspect] {
        QWidget* modal = QApplication::activeModalWidget();
        QVERIFY(modal);
        inspect(modal);
    });
}

} // namespace veltrako::testing
