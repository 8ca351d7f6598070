#pragma once
// The person in front of a terminal: messages go to stderr, questions take
// their answer from the command line or fail clearly, and there is no page
// but the first.

#include "user_interface.h"

#include <QStringList>

#include <functional>
#include <optional>

namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::cli {

class ConsoleUi final : public UserInterface {
public:
    // Answers given on the command line (--yes / --no, --input, --file).
    std::optional<bool> preset_answer;
    std::optional<QString> preset_input;
    std::optional<QString> preset_file;
    // Lines of the developer page go to stderr too.
    bool verbose = false;
    // The texts of --lang for what the console itself says; set as soon as
    // they are loaded.
    const config::LanguageTables* language = nullptr;
    // Called whenever the device record changed.
    std::function<void()> on_record_changed;

    // True once a question came up that the command line did not answer.
    bool unanswered_question() const { return unanswered_; }
    int messages_shown() const { return messages_; }

    void show_msg(const QString& text, MsgIcon icon, const QString& title) override;
    bool ask_yes_no(const QString& text, const QString& title) override;
    bool ask_ok_cancel(const QString& text, const QString& title) override;
    bool confirm_change(const QString& text) override;
    // A script does not end a program with a report open.
    SaveAnswer ask_save_discard_cancel(const QString&) override { return SaveAnswer::discard; }
    std::optional<QString> input_box(const QString& prompt, const QString& title,
                                     const QString& initial) override;
    QString choose_open_file(const FileDialogRequest& request) override;
    QString choose_save_file(const FileDialogRequest& request) override;
    void set_busy(bool) override {}
    Page current_page() const override { return Page::geraet; }
    void select_page(Page) override {}
    void append_out(const QString& text) override;
    void clear_out() override {}
    void set_info_caption(const QString&) override {}
    // The state goes to stderr with --verbose only.
    void connection_changed(ConnectionState state, const QString& text) override;
    // A note about a problem goes to stderr like a message; a confirmation
    // only with --verbose (the result lines say it on stdout).
    void show_note(const QString& text, MsgIcon icon) override;
    void device_record_changed() override;
    // The status table is kept for the command that asked for it.
    void show_status_table(const QString& text) override {
        status_table = text;
        ++status_tables_shown;
    }

    QString status_table;
    int status_tables_shown = 0;

private:
    bool answer(const QString& question);
    QString text(int n) const;
    bool unanswered_ = false;
    int messages_ = 0;
};

// Writes a line to stderr, line breaks of device texts made plain.
void print_error(const QString& text);

} // namespace veltrako::cli
