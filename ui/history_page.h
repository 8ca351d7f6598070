#pragma once
// The "Verlauf" page: the devices the archive has seen, one device's visits
// and what changed between them, and its usage over every archived period in
// the compliance chart. Everything is read on the archive's own thread; the
// page only fills its tables and draws the month it was handed.

#include "archive/archive_history.h"

#include <QString>
#include <QWidget>

#include <memory>

namespace veltrako {
class AppContext;
}
namespace veltrako::archive {
class ArchiveService;
}

namespace veltrako::ui {

class FrmMain;

// p_verlauf: the compliance chart of one month of the archived periods.
class HistoryChartWidget : public QWidget {
    Q_OBJECT
public:
    explicit HistoryChartWidget(QWidget* parent = nullptr);
    // Shows `month` (nothing while it is null); `ctx` gives the texts and the time.
    void show_month(const archive::ChartMonth* month, const AppContext* ctx);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const archive::ChartMonth* month_ = nullptr;
    const AppContext* ctx_ = nullptr;
};

// Connects the page to the archive. Without it the page says there is none.
void bind_page_verlauf(FrmMain& form, AppContext& ctx, archive::ArchiveService& service);

} // namespace veltrako::ui
