#pragma once
// A device link that records every call and fails where the test says, to
// walk open_device through each of its steps.

#include "link/device_link.h"

#include <QStringList>

namespace veltrako::testing {

class FakeLink final : public link::DeviceLink {
public:
    enum Step { list, open_step, baud, characteristics, flow, dtr, timeouts, step_count };

    std::uint32_t device_count = 1;
    Step failing_step = step_count; // none
    link::FtStatus failure_status = link::FT_IO_ERROR;
    link::FtStatus close_status = link::FT_OK;
    QByteArray incoming;        // bytes waiting to be read
    std::uint32_t short_by = 0; // read returns this many bytes fewer than asked
    QByteArray written;
    QStringList calls;

    link::FtStatus list_device_count(std::uint32_t& count) override {
        calls << QStringLiteral("list");
        count = device_count;
        return result(list);
    }
    link::FtStatus open(int index, link::FtHandle& handle) override {
        calls << QStringLiteral("open %1").arg(index);
        if (failing_step == open_step)
            return failure_status;
        handle = 7;
        return link::FT_OK;
    }
    link::FtStatus set_baud_rate(link::FtHandle, std::uint32_t b) override {
        calls << QStringLiteral("baud %1").arg(b);
        return result(baud);
    }
    link::FtStatus set_data_characteristics(link::FtHandle, std::uint8_t w, std::uint8_t s,
                                            std::uint8_t p) override {
        calls << QStringLiteral("data %1 %2 %3").arg(w).arg(s).arg(p);
        return result(characteristics);
    }
    link::FtStatus set_flow_control(link::FtHandle, std::uint16_t f, std::uint8_t on,
                                    std::uint8_t off) override {
        calls << QStringLiteral("flow %1 %2 %3").arg(f).arg(on).arg(off);
        return result(flow);
    }
    link::FtStatus set_dtr(link::FtHandle) override {
        calls << QStringLiteral("dtr");
        return result(dtr);
    }
    link::FtStatus set_timeouts(link::FtHandle, std::uint32_t r, std::uint32_t w) override {
        calls << QStringLiteral("timeouts %1 %2").arg(r).arg(w);
        return result(timeouts);
    }
    link::FtStatus get_queue_status(link::FtHandle, std::uint32_t& rx) override {
        rx = static_cast<std::uint32_t>(incoming.size());
        return link::FT_OK;
    }
    link::FtStatus read(link::FtHandle, QByteArray& buffer, std::uint32_t wanted,
                        std::uint32_t& returned) override {
        buffer.resize(wanted);
        returned = wanted - short_by;
        std::copy_n(incoming.constData(), returned, buffer.data());
        incoming.clear();
        return short_by ? link::FT_IO_ERROR : link::FT_OK;
    }
    link::FtStatus write(link::FtHandle, const QByteArray& bytes, std::uint32_t& n) override {
        written += bytes;
        n = static_cast<std::uint32_t>(bytes.size());
        return link::FT_OK;
    }
    link::FtStatus close(link::FtHandle h) override {
        calls << QStringLiteral("close %1").arg(h);
        return close_status;
    }

private:
    link::FtStatus result(Step s) const { return s == failing_step ? failure_status : link::FT_OK; }
};

} // namespace veltrako::testing
