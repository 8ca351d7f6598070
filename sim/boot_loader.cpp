#include "boot_loader.h"

namespace veltrako::sim {

BootLoader::BootLoader(QByteArray greeting) : greeting_(std::move(greeting)) {}

void BootLoader::enter() {
    session_lines_ = 0;
    session_attempts_ = 0;
    attempts_on_line_ = 0;
}

bool BootLoader::refuse(const Faults& faults) const {
    if (faults.nak_line <= 0 || session_lines_ + 1 != faults.nak_line)
        return false;
    switch (faults.nak_attempts) {
    case NakAttempts::first:
        return attempts_on_line_ <= 1;
    case NakAttempts::first_two:
        return attempts_on_line_ <= 2;
    case NakAttempts::always:
        return true;
    }
    return false;
}

BootLoader::Step BootLoader::take(QByteArray& buffer, const Faults& faults) {
    Step step;
    if (buffer.isEmpty())
        return step;
    const char first = buffer.at(0);
    if (first == 'I') {
        buffer.remove(0, 1);
        step.kind = Step::send;
        step.answer = faults.lose_sync ? QByteArray("??\r\n") : greeting_;
        return step;
    }
    if (first == 'R') {
        buffer.remove(0, 1);
        step.kind = Step::restart;
        return step;
    }
    if (first != data_line_start) {
        buffer.remove(0, 1);
        step.kind = Step::ignored;
        return step;
    }
    if (buffer.size() < 2)
        return step;
    const int total = static_cast<unsigned char>(buffer.at(1)) + 5;
    if (buffer.size() < total)
        return step;
    const QByteArray line = buffer.left(total);
    buffer.remove(0, total);
    unsigned sum = 0;
    for (char c : line)
        sum += static_cast<unsigned char>(c);

    ++session_attempts_;
    ++attempts_on_line_;
    step.kind = Step::send;
    step.programs_flash = true;
    if ((sum & 0xFF) != 0 || refuse(faults)) {
        step.answer = "E";
        return step;
    }
    programmed_ << line;
    ++session_lines_;
    attempts_on_line_ = 0;
    switch (faults.ack_form) {
    case AckForm::plain:
        step.answer = ">";
        break;
    case AckForm::doubled:
        step.answer = ">>";
        break;
    case AckForm::trailing_blank:
        step.answer = "> ";
        break;
    }
    return step;
}

} // namespace veltrako::sim
