#pragma once
// What every fuzz target needs: a clock that stands still and a user
// interface that shows nothing.

#include "clock.h"
#include "user_interface.h"

namespace veltrako::fuzz {

class StillClock final : public Clock {
public:
    QDateTime now() const override { return QDateTime(QDate(2026, 1, 1), QTime(12, 0), Qt::UTC); }
    qint64 elapsed_ms() const override { return 0; }
    void wait_ms(int) override {}
};

class SilentUi final : public UserInterface {
public:
    void show_msg(const QString&, MsgIcon, const QString&) override {}
    bool ask_yes_no(const QString&, const QString&) override { return false; }
    bool ask_ok_cancel(const QString&, const QString&) override { return false; }
    std::optional<QString> input_box(const QString&, const QString&, const QString&) override {
        return std::nullopt;
    }
    QString choose_open_file(const FileDialogRequest&) override { return {}; }
    QString choose_save_file(const FileDialogRequest&) override { return {}; }
    void set_busy(bool) override {}
    Page current_page() const override { return Page::geraet; }
    void select_page(Page) override {}
    void append_out(const QString&) override {}
    void clear_out() override {}
    void set_info_caption(const QString&) override {}
    void device_record_changed() override {}
};

} // namespace veltrako::fuzz
