#pragma once
// A scripted person in front of the screen: records every message and
// answers questions from queues the test fills.

#include "user_interface.h"

#include <functional>

#include <QList>
#include <QStringList>

namespace veltrako::testing {

class FakeUserInterface final : public UserInterface {
public:
    void show_msg(const QString& text, MsgIcon, const QString&) override {
        messages << text;
        if (on_message)
            on_message(); // the person reads it (a test may let time pass)
    }
    bool ask_yes_no(const QString& text, const QString&) override {
        questions << text;
        return take(yes_no_answers, false);
    }
    bool ask_ok_cancel(const QString& text, const QString&) override {
        questions << text;
        return take(ok_cancel_answers, false);
    }
    // Answered from yes_no_answers like any Yes/No question; kept apart too,
    // to tell that No was the default.
    bool confirm_change(const QString& text) override {
        questions << text;
        confirmations << text;
        return take(yes_no_answers, false);
    }
    SaveAnswer ask_save_discard_cancel(const QString& text) override {
        questions << text;
        return save_answers.isEmpty() ? SaveAnswer::cancel : save_answers.takeFirst();
    }
    std::function<void()> on_message;
    std::optional<QString> input_box(const QString& prompt, const QString&,
                                     const QString&) override {
        questions << prompt;
        if (input_answers.isEmpty())
            return std::nullopt;
        return input_answers.takeFirst();
    }
    QString choose_open_file(const FileDialogRequest& r) override {
        dialogs << r;
        return file_answers.isEmpty() ? QString() : file_answers.takeFirst();
    }
    QString choose_save_file(const FileDialogRequest& r) override {
        dialogs << r;
        return file_answers.isEmpty() ? QString() : file_answers.takeFirst();
    }
    void set_busy(bool b) override { busy = b; }
    Page current_page() const override { return page; }
    void select_page(Page p) override { page = p; }
    void append_out(const QString& text) override { out += text; }
    void clear_out() override { out.clear(); }
    void set_info_caption(const QString& text) override { info_caption = text; }
    void connection_changed(ConnectionState state, const QString& text) override {
        connection_states << state;
        connection_text = text;
    }
    void show_note(const QString& text, MsgIcon icon) override {
        notes << text;
        note_icon = icon;
    }
    void device_record_changed() override { ++record_changes; }
    void show_status_table(const QString& text) override { status_tables << text; }

    QStringList messages;
    QStringList questions;
    QStringList confirmations; // the questions before changes that cannot be undone
    QList<SaveAnswer> save_answers;
    QList<ConnectionState> connection_states; // every change, in order
    QString connection_text;                  // the latest wording
    QStringList notes;
    MsgIcon note_icon = MsgIcon::none; // of the latest note
    QList<FileDialogRequest> dialogs;
    QList<bool> yes_no_answers;
    QList<bool> ok_cancel_answers;
    QStringList input_answers;
    QStringList file_answers;
    QString out;
    QString info_caption;
    bool busy = false;
    Page page = Page::geraet;
    int record_changes = 0;
    QStringList status_tables; // every text shown in sysstatout

private:
    static bool take(QList<bool>& answers, bool fallback) {
        return answers.isEmpty() ? fallback : answers.takeFirst();
    }
};

} // namespace veltrako::testing
