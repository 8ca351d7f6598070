#pragma once
// Narrow seams through which the protocol core hands work to the feature
// modules that own it (compliance table, status table, test report), and
// through which the features hand what they finished to the device's
// history (job_records.h). Each
// feature installs its handler when it is built into the context; an empty
// hook means the feature is absent and nothing happens.

#include "job_records.h"

#include <QByteArray>

#include <functional>

namespace veltrako {

struct FeatureHooks {
    // Every "K" or "k" answer. May throw protocol::InterpretError like the
    // interpreter's own readers.
    std::function<void(const QByteArray& payload)> compliance_answer;
    // Every tick with a device open, before the answer time-out is looked
    // at: a readout waiting for an answer asks again or gives up.
    std::function<void()> answer_watch;
    // The general reset: empty the compliance table and update its buttons.
    std::function<void()> link_reset;
    // A status readout has ended: show the table.
    std::function<void()> status_readout_complete;
    // A readout started for saving has ended: save it without asking.
    std::function<void()> status_save_due;
    // The silent reconnection found a device: refresh the report's device data.
    std::function<void()> device_found;

    // The device's history. Every finished job hands its record on; a visit
    // opens with visit_begun, and what is handed on until visit_done belongs
    // to that visit.
    std::function<void(const jobs::UsageReadout&)> usage_read;
    std::function<void(const jobs::StatusReadout&)> status_read;
    std::function<void(const jobs::ReportFiled&)> report_filed;
    std::function<void()> visit_begun;
    std::function<void(const jobs::VisitDone&)> visit_done;
    std::function<void(const jobs::FirmwareUpdate&)> firmware_updated;
    std::function<void(const jobs::DeviceWrite&)> device_written;
};

} // namespace veltrako
