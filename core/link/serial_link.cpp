#include "link/serial_link.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QSerialPort>
#include <QSerialPortInfo>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <iterator>
#include <optional>

namespace veltrako::link {

namespace {

constexpr FtHandle serial_handle = 1;
// Bounds one taking-in, so a peer that never stops talking cannot hold the caller.
constexpr int max_reads_per_take = 16;

// Asked only after a call failed, so even "no error" is no success here.
FtStatus status_for(QSerialPort::SerialPortError error) {
    switch (error) {
    case QSerialPort::DeviceNotFoundError:
        return FT_DEVICE_NOT_FOUND;
    case QSerialPort::PermissionError:
    case QSerialPort::OpenError:
        return FT_DEVICE_NOT_OPENED;
    case QSerialPort::NotOpenError:
        return FT_INVALID_HANDLE;
    case QSerialPort::WriteError:
    case QSerialPort::ReadError:
    case QSerialPort::ResourceError:
    case QSerialPort::TimeoutError:
        return FT_IO_ERROR;
    case QSerialPort::UnsupportedOperationError:
        return FT_NOT_SUPPORTED;
    case QSerialPort::NoError:
    case QSerialPort::UnknownError:
        break;
    }
    return FT_OTHER_ERROR;
}

struct LineSetting {
    QSerialPort::DataBits bits;
    QSerialPort::StopBits stop_bits;
    QSerialPort::Parity parity;
};

// std::nullopt for arguments the D2XX driver does not define either.
std::optional<LineSetting> line_setting(std::uint8_t word_length, std::uint8_t stop_bits,
                                        std::uint8_t parity) {
    static constexpr QSerialPort::Parity parities[] = {
        QSerialPort::NoParity, QSerialPort::OddParity, QSerialPort::EvenParity,
        QSerialPort::MarkParity, QSerialPort::SpaceParity};
    if ((word_length != 7 && word_length != FT_BITS_8) || parity >= std::size(parities))
        return std::nullopt;
    // D2XX counts stop bits as 0 = one, 2 = two; the numbers are not the count.
    if (stop_bits != FT_STOP_BITS_1 && stop_bits != FT_STOP_BITS_2)
        return std::nullopt;
    return LineSetting{word_length == 7 ? QSerialPort::Data7 : QSerialPort::Data8,
                       stop_bits == FT_STOP_BITS_2 ? QSerialPort::TwoStop : QSerialPort::OneStop,
                       parities[parity]};
}

bool path_exists(const QString& path) {
#ifdef Q_OS_WIN
    // "COM3" is no file; the port list knows it.
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    return std::any_of(ports.begin(), ports.end(), [&](const QSerialPortInfo& info) {
        return info.portName().compare(path, Qt::CaseInsensitive) == 0 ||
               info.systemLocation().compare(path, Qt::CaseInsensitive) == 0;
    });
#else
    return QFileInfo::exists(path);
#endif
}

} // namespace

SerialLink::SerialLink(QString path)
    : path_(std::move(path)), port_(std::make_unique<QSerialPort>()) {
    // A read that fails, or a port that vanishes, is noticed as it happens,
    // also when the event loop did the reading.
    QObject::connect(port_.get(), &QSerialPort::errorOccurred,
                     [this](QSerialPort::SerialPortError error) {
                         if (error == QSerialPort::ResourceError || error == QSerialPort::ReadError)
                             gone_ = true;
                     });
}

SerialLink::~SerialLink() = default;

bool SerialLink::is_pseudo_terminal(const QString& path) {
#ifdef Q_OS_LINUX
    return QFileInfo(path).canonicalFilePath().startsWith(QLatin1String("/dev/pts/"));
#else
    Q_UNUSED(path);
    return false;
#endif
}

FtStatus SerialLink::fail(FtStatus status) {
    last_error_ = path_ + QStringLiteral(": ") + port_->errorString();
    return status;
}

FtStatus SerialLink::report_gone() {
    // A pseudo-terminal whose other end closed reads as end of file, which the
    // port reports with whatever system error came before; say what happened.
    last_error_ = path_ + QStringLiteral(": the port is gone or can no longer be read (") +
                  port_->errorString() + QLatin1Char(')');
    return FT_IO_ERROR;
}

FtStatus SerialLink::check(FtHandle handle) {
    if (!port_->isOpen() || handle != serial_handle)
        return FT_INVALID_HANDLE;
    if (gone_)
        return report_gone();
    port_->clearError();
    return FT_OK;
}

FtStatus SerialLink::list_device_count(std::uint32_t& count) {
    count = path_exists(path_) ? 1 : 0;
    return FT_OK;
}

FtStatus SerialLink::open(int index, FtHandle& handle) {
    if (port_->isOpen()) {
        last_error_ = path_ + QStringLiteral(": already open");
        return FT_DEVICE_NOT_OPENED;
    }
    if (index != 0 || !path_exists(path_)) {
        last_error_ = path_ + QStringLiteral(": no such port");
        return FT_DEVICE_NOT_FOUND;
    }
    port_->setPortName(path_);
    if (!port_->open(QIODevice::ReadWrite)) {
        const bool missing = port_->error() == QSerialPort::DeviceNotFoundError;
        return fail(missing ? FT_DEVICE_NOT_FOUND : FT_DEVICE_NOT_OPENED);
    }
    gone_ = false;
    pseudo_terminal_ = is_pseudo_terminal(path_);
    // Bytes from before this session mean nothing now.
    port_->clear();
    handle = serial_handle;
    return FT_OK;
}

FtStatus SerialLink::set_baud_rate(FtHandle handle, std::uint32_t baud) {
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    if (baud == 0 || baud > INT_MAX) {
        last_error_ = path_ + QStringLiteral(": no such baud rate: %1").arg(baud);
        return FT_INVALID_BAUD_RATE;
    }
    if (!port_->setBaudRate(static_cast<qint32>(baud))) {
        const bool refused = port_->error() == QSerialPort::UnsupportedOperationError;
        return fail(refused ? FT_INVALID_BAUD_RATE : status_for(port_->error()));
    }
    return FT_OK;
}

FtStatus SerialLink::set_data_characteristics(FtHandle handle, std::uint8_t word_length,
                                              std::uint8_t stop_bits, std::uint8_t parity) {
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    const std::optional<LineSetting> line = line_setting(word_length, stop_bits, parity);
    if (!line) {
        last_error_ = path_ + QStringLiteral(": no such line setting: %1 data bits, stop bits "
                                             "value %2, parity value %3")
                                  .arg(word_length)
                                  .arg(stop_bits)
                                  .arg(parity);
        return FT_INVALID_PARAMETER;
    }
    if (!port_->setDataBits(line->bits) || !port_->setStopBits(line->stop_bits) ||
        !port_->setParity(line->parity))
        return fail(status_for(port_->error()));
    return FT_OK;
}

FtStatus SerialLink::set_flow_control(FtHandle handle, std::uint16_t flow, std::uint8_t,
                                      std::uint8_t) {
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    if (flow != FT_FLOW_NONE) {
        last_error_ = path_ + QStringLiteral(": only \"no flow control\" is supported");
        return FT_NOT_SUPPORTED;
    }
    if (!port_->setFlowControl(QSerialPort::NoFlowControl))
        return fail(status_for(port_->error()));
    return FT_OK;
}

FtStatus SerialLink::set_dtr(FtHandle handle) {
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    if (port_->setDataTerminalReady(true))
        return FT_OK;
#ifdef Q_OS_UNIX
    // The one failure a pseudo-terminal must give: it has no modem lines.
    if (pseudo_terminal_ && port_->error() == QSerialPort::UnsupportedOperationError &&
        port_->errorString() == qt_error_string(ENOTTY)) {
        port_->clearError();
        return FT_OK;
    }
#endif
    return fail(status_for(port_->error()));
}

FtStatus SerialLink::set_timeouts(FtHandle handle, std::uint32_t, std::uint32_t write_ms) {
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    write_timeout_ms_ = static_cast<int>(std::min<std::uint32_t>(write_ms, INT_MAX));
    return FT_OK;
}

FtStatus SerialLink::take_in() {
    // A zero wait only looks: it reads what is there and never blocks the caller.
    for (int i = 0; i < max_reads_per_take && !gone_ && port_->waitForReadyRead(0); ++i) {
    }
    if (gone_)
        return report_gone();
    port_->clearError(); // nothing waiting is reported as a time-out, which is none here
    return FT_OK;
}

FtStatus SerialLink::get_queue_status(FtHandle handle, std::uint32_t& rx_bytes) {
    rx_bytes = 0;
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    if (const FtStatus s = take_in(); s != FT_OK)
        return s;
    rx_bytes = static_cast<std::uint32_t>(std::min<qint64>(port_->bytesAvailable(), UINT32_MAX));
    return FT_OK;
}

FtStatus SerialLink::read(FtHandle handle, QByteArray& buffer, std::uint32_t wanted,
                          std::uint32_t& returned) {
    returned = 0;
    buffer.resize(static_cast<qsizetype>(wanted));
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    if (port_->bytesAvailable() < static_cast<qint64>(wanted)) {
        if (const FtStatus s = take_in(); s != FT_OK)
            return s;
    }
    const qint64 n = port_->read(buffer.data(), static_cast<qint64>(wanted));
    if (n < 0)
        return fail(status_for(port_->error()));
    returned = static_cast<std::uint32_t>(n);
    return FT_OK;
}

FtStatus SerialLink::write(FtHandle handle, const QByteArray& bytes, std::uint32_t& written) {
    written = 0;
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    if (port_->write(bytes) != bytes.size())
        return fail(status_for(port_->error()));
    const QDeadlineTimer deadline(write_timeout_ms_);
    while (port_->bytesToWrite() > 0 && !gone_) {
        const qint64 left = deadline.remainingTime();
        if (left == 0 || !port_->waitForBytesWritten(static_cast<int>(left)))
            break;
    }
    const qint64 pending = port_->bytesToWrite();
    written = static_cast<std::uint32_t>(bytes.size() - std::min<qint64>(pending, bytes.size()));
    if (pending == 0)
        return FT_OK;
    // Left-overs would reach the device later, in the middle of another frame.
    const QSerialPort::SerialPortError error = port_->error();
    const FtStatus status = fail(error == QSerialPort::NoError ? FT_IO_ERROR : status_for(error));
    port_->clear(QSerialPort::Output);
    return status;
}

FtStatus SerialLink::close(FtHandle handle) {
    if (!port_->isOpen() || handle != serial_handle)
        return FT_INVALID_HANDLE;
    port_->clearError();
    port_->close();
    gone_ = false;
    const QSerialPort::SerialPortError error = port_->error();
    return error == QSerialPort::NoError ? FT_OK : fail(status_for(error));
}

} // namespace veltrako::link
