#include "console_ui.h"

#include "cli_texts.h"

#include <cstdio>

namespace veltrako::cli {

namespace {

// What the console says when the command line left a question open.
constexpr int text_no_answer = 9229; // "(no answer given: use --yes or --no)"
constexpr int text_no_input = 9230;  // "(no input given: use --input TEXT)"
constexpr int text_no_file = 9231;   // "(no file given: use --file PATH)"

QString plain(QString text) {
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    while (text.endsWith(QLatin1Char('\n')))
        text.chop(1);
    return text;
}
} // namespace

void print_error(const QString& text) {
    std::fprintf(stderr, "%s\n", qUtf8Printable(plain(text)));
    std::fflush(stderr);
}

void ConsoleUi::show_msg(const QString& text, MsgIcon, const QString&) {
    ++messages_;
    print_error(text);
}

bool ConsoleUi::answer(const QString& question) {
    if (preset_answer)
        return *preset_answer;
    unanswered_ = true;
    print_error(question);
    print_error(text(text_no_answer));
    return false;
}

QString ConsoleUi::text(int n) const {
    return language ? cli_text(*language, n) : QString();
}

bool ConsoleUi::ask_yes_no(const QString& text, const QString&) {
    return answer(text);
}
bool ConsoleUi::ask_ok_cancel(const QString& text, const QString&) {
    return answer(text);
}
bool ConsoleUi::confirm_change(const QString& text) {
    return answer(text);
}

void ConsoleUi::connection_changed(ConnectionState, const QString& text) {
    if (verbose)
        print_error(text);
}

void ConsoleUi::show_note(const QString& text, MsgIcon icon) {
    if (verbose || icon == MsgIcon::exclamation || icon == MsgIcon::critical)
        print_error(text);
}

std::optional<QString> ConsoleUi::input_box(const QString& prompt, const QString&, const QString&) {
    if (preset_input) {
        // Given once: asking again (after an invalid entry) cancels.
        auto value = preset_input;
        preset_input.reset();
        return value;
    }
    unanswered_ = true;
    print_error(prompt);
    print_error(text(text_no_input));
    return std::nullopt;
}

QString ConsoleUi::choose_open_file(const FileDialogRequest& request) {
    if (preset_file)
        return *preset_file;
    unanswered_ = true;
    print_error(request.title + QLatin1Char(' ') + text(text_no_file));
    return {};
}

QString ConsoleUi::choose_save_file(const FileDialogRequest& request) {
    return choose_open_file(request);
}

void ConsoleUi::append_out(const QString& text) {
    if (verbose)
        print_error(text);
}

void ConsoleUi::device_record_changed() {
    if (on_record_changed)
        on_record_changed();
}

} // namespace veltrako::cli
