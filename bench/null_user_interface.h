#pragma once
// A user interface that shows nothing, for measurements.

#include "user_interface.h"

namespace veltrako::bench {

// Not final: a benchmark that counts some messages overrides just those.
class NullUserInterface : public UserInterface {
public:
    void show_msg(const QString&, MsgIcon, const QString&) override {}
    bool ask_yes_no(const QString&, const QString&) override { return false; }
    bool ask_ok_cancel(const QString&, const QString&) override { return false; }
    bool confirm_change(const QString&) override { return false; }
    SaveAnswer ask_save_discard_cancel(const QString&) override { return SaveAnswer::discard; }
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
    void connection_changed(ConnectionState, const QString&) override {}
    void show_note(const QString&, MsgIcon) override {}
    void device_record_changed() override {}
    void show_status_table(const QString&) override {}
};

} // namespace veltrako::bench
