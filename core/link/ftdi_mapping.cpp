#include "link/ftdi_mapping.h"

#include "link/ft_status.h"

#include <ftdi.h>

namespace veltrako::link::ftdi {

namespace {
// libftdi 1.5, ftdi_usb_open_dev: -4 is "libusb_open() failed", which is what a
// user without access to the USB device node gets; -8 is "inappropriate
// permissions on device!", when the kernel driver may not be detached.
constexpr int open_refused = -4;
constexpr int no_permission = -8;
} // namespace

std::optional<LineProperty> line_property(std::uint8_t word_length, std::uint8_t stop_bits,
                                          std::uint8_t parity) {
    LineProperty p;
    switch (word_length) {
    case 7:
        p.bits = BITS_7;
        break;
    case FT_BITS_8:
        p.bits = BITS_8;
        break;
    default:
        return std::nullopt;
    }
    // D2XX counts stop bits as 0 = one, 2 = two; the numbers are not the count.
    switch (stop_bits) {
    case FT_STOP_BITS_1:
        p.stop_bits = STOP_BIT_1;
        break;
    case FT_STOP_BITS_2:
        p.stop_bits = STOP_BIT_2;
        break;
    default:
        return std::nullopt;
    }
    switch (parity) {
    case FT_PARITY_NONE:
        p.parity = NONE;
        break;
    case 1:
        p.parity = ODD;
        break;
    case 2:
        p.parity = EVEN;
        break;
    case 3:
        p.parity = MARK;
        break;
    case 4:
        p.parity = SPACE;
        break;
    default:
        return std::nullopt;
    }
    return p;
}

QString failure_text(int code, const char* libftdi_text, bool opening) {
    QString text =
        QStringLiteral("libftdi: %1 (%2)")
            .arg(libftdi_text ? QString::fromLocal8Bit(libftdi_text) : QStringLiteral("no detail"))
            .arg(code);
    if (opening && (code == open_refused || code == no_permission)) {
        text += QStringLiteral(". If this user may not use the USB device, install the udev "
                               "rule: copy dist/udev/%1 to /etc/udev/rules.d/, run "
                               "\"udevadm control --reload-rules\" and plug the device in again.")
                    .arg(QLatin1String(udev_rule_name));
    }
    return text;
}

} // namespace veltrako::link::ftdi
