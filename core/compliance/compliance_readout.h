#pragma once
// The "Compliance" page's procedures: reading the usage memory record by
// record, the page's buttons, the chart's month, erasing the memory, and the
// synthetic "Testdaten".

#include "compliance/compliance_memory.h"

#include <QByteArray>

class QRandomGenerator;

namespace veltrako {
class AppContext;
}

namespace veltrako::compliance {

// Connects the memory to the protocol core: the "K" and "k" answers and the
// general reset.
void install_compliance(AppContext& ctx);

// The flag the page's readout and delete buttons follow: the device
// controls are enabled (link/connection_state.h).
bool link_enabled(const AppContext& ctx);

// Updates the buttons when the link flag they follow has changed since they
// were last set; the window calls it whenever the device record changed.
void follow_link_state(AppContext& ctx);

// Empties the table and the state; the picture is cleared.
void compliance_clear(ComplianceMemory& memory);
// Enables the buttons for the present state; `enable` stands for the link.
void compliance_buttons(AppContext& ctx, bool enable);
// Chooses the month when none is chosen, computes its usage and summary and
// has the page draw the chart.
void compliance_show(AppContext& ctx);

// Asks for the count, then for the records 0 up to it, one after the other.
// Does nothing without a device or while a readout runs. `tell_failure`: a
// readout that gives up says so in a message; otherwise only `failure` holds
// it, for the caller to say.
void start_readout(AppContext& ctx, bool tell_failure);
// "Speicher auslesen": start_readout, telling a failure.
void cmd_complianceread_Click(AppContext& ctx);
// Every tick while a readout runs: a request whose answer has not come, or
// came as nothing it could take, is asked again up to three times; then the
// readout fails, naming what is missing, with nothing to save or print.
void watch_readout(AppContext& ctx);
// "Abbrechen" during a readout: no further record is asked for; the records
// read so far stay in the table, with no chart and nothing to save or print.
void compliance_cancel(AppContext& ctx);
// A "K" or "k" answer. Throws protocol::InterpretError on a malformed one.
// A record is taken only as the one its own number names, and only while
// the readout waits for exactly that one; every other answer (late, twice,
// another record, after a cancel) is logged and ignored.
void compliance_answer(AppContext& ctx, const QByteArray& payload);
// "Speicher löschen", after an OK/Cancel question.
void cmd_compliancedelete_Click(AppContext& ctx);
void cmd_prevmonth_Click(AppContext& ctx);
void cmd_nextmonth_Click(AppContext& ctx);

// Fills the table with a fixed set of periods in 2006 and a random month of
// daily use in January 2007.
void compliance_testdata(ComplianceMemory& memory, QRandomGenerator& random);
// "Testdaten": compliance_testdata, then compliance_show.
void cmd_compliance_test_Click(AppContext& ctx, QRandomGenerator& random);

// The stored time stamp of a "k" answer, from its four bytes at `position`:
// empty when the first byte is 0x80 or more.
Stamp device_time(const QByteArray& payload, int position);

} // namespace veltrako::compliance
