// The payload typed after `send` on the command line: any text must give a
// payload or a refusal, and a "hex:" payload must hold exactly the bytes its
// digit pairs name.

#include "payload_text.h"

#include <QString>

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString argument =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto payload = veltrako::cli::parse_payload_argument(argument);
    if (!payload)
        return 0;
    if (payload->isEmpty())
        __builtin_trap(); // an empty payload cannot be sent and must be refused
    if (argument.startsWith(QLatin1String("hex:"))) {
        QByteArray digits;
        for (const QChar c : argument.mid(4))
            if (c.isDigit() || (c.toLower() >= QLatin1Char('a') && c.toLower() <= QLatin1Char('f')))
                digits += static_cast<char>(c.toLower().toLatin1());
        if (payload->toHex() != digits)
            __builtin_trap();
    }
    return 0;
}
