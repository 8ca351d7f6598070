#pragma once
// A readout's progress as one line on stderr, rewritten in place:
// "records 1234 / 4097, 30%, 0:09 left". Only when stderr is a terminal; a
// script that reads stderr gets nothing of it.

#include <QElapsedTimer>
#include <QString>

namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::progress {
class Progress;
struct Standing;
} // namespace veltrako::progress

namespace veltrako::cli {

// The text of the line, numbers in the user's locale, words in the language
// of `language`.
QString progress_text(const progress::Standing& standing, const config::LanguageTables& language);

class ProgressLine {
public:
    // Watches `progress` from here until destroyed.
    ProgressLine(progress::Progress& progress, const config::LanguageTables& language);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

private:
    void show();

    progress::Progress& progress_;
    const config::LanguageTables& language_;
    bool terminal_;
    bool printed_ = false;
    QElapsedTimer since_shown_;
};

} // namespace veltrako::cli
