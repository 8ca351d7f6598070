#pragma once
// The one application context: every state record of the program, owned in
// one place and passed by reference. A test builds a fresh one in one line.

#include "clock.h"
#include "compliance/compliance_memory.h"
#include "config/config.h"
#include "config/language.h"
#include "device/device_record.h"
#include "device/live_history.h"
#include "device/timing_presets.h"
#include "feature_hooks.h"
#include "link/link_state.h"
#include "print/printer_choice.h"
#include "protocol/comm_log.h"
#include "protocol/poll_timer.h"
#include "protocol/protocol_state.h"
#include "report/report_draft.h"
#include "report/report_record.h"
#include "status/status_memory.h"
#include "user_interface.h"

#include <QByteArray>

#include <functional>
#include <memory>

namespace veltrako {

class AppContext {
public:
    AppContext(Clock& clock, UserInterface& ui, std::unique_ptr<link::DeviceLink> backend);

    Clock& clock;
    UserInterface& ui;

    // Folder of the program, ending in a separator; the language files live here.
    QString program_dir;
    // The veltrako2.ini to read and write back, and the folder (ending in a
    // separator) for files the program names itself. Both are the program's
    // folder unless that is read-only (config/config_location.h).
    QString config_path;
    QString user_dir;
    // The archive file in use (config::archive_path); empty: no archive.
    QString archive_path;
    config::Config config;
    // Whether a setting changed while the program runs (the folder a file
    // dialog remembers) is written back to config_path at once. A front end
    // whose runs must leave the technician's settings as they are (the
    // command line, which scripts run) turns it off: the change then holds
    // for the run only.
    bool persist_config = true;
    config::LanguageTables language;

    link::LinkState link;
    protocol::ProtocolState protocol;
    protocol::CommLog comm_log;
    protocol::PollTimer timer1; // Timer1

    device::DeviceRecord device;
    device::LiveHistory live_history;
    device::PresetTable presets; // the three valve timing presets and their buttons
    status::StatusMemory status;
    compliance::ComplianceMemory compliance;
    report::ReportRecord report;
    // Keeps the report being typed as a draft beside the configuration.
    report::DraftKeeper report_draft{*this};

    // The printer the print dialog opens on next time.
    print::PrinterChoice printer_choice;

    FeatureHooks hooks;

    // Receives every valid frame's payload: the response interpreter, unless
    // a front end or a test puts something in between.
    std::function<void(const QByteArray&)> payload_handler;
};

// Message box with an OK button only.
void show_msg(AppContext& ctx, const QString& text);
// Appends to the developer page's message box and logs the text under "ERR".
void show_info(AppContext& ctx, const QString& text);
// After a confirmed file dialog: the chosen file's folder becomes INITDIR,
// the start of the next dialog, and the configuration file is rewritten at
// once unless the context does not persist its settings. False when the
// configuration file could not be written.
bool remember_dialog_folder(AppContext& ctx, const QString& chosen_file);
// Communication log line stamped with the context's clock.
void log_comm(AppContext& ctx, const QString& tag, const QString& text);

} // namespace veltrako
