#pragma once
// Narrow seams through which the protocol core hands work to the feature
// modules that own it (compliance table, status table, test report). Each
// feature installs its handler when it is built into the context; an empty
// hook means the feature is absent and nothing happens.

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
};

} // namespace veltrako
