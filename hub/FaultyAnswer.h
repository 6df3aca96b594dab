// Turns a good answer into the faulty one that was asked for.
#pragma once

#include "Answer.h"
#include "Faults.h"
#include "StopSignal.h"

namespace Morvenn::Net::MvServerProxy::Hub {

// Applies the faults that concern status, headers and body; those that replace the answer (early,
// delay, reset without a value, close) are the exchange's. `stop` is borrowed and outlives the
// answer; `resetConnection` is called from the body's source. Throws Refusal with 400 when the
// answer does not fit the fault.
void applyFaults(Answer& answer, const FaultPlan& plan, StopSignal& stop,
                 const std::function<void()>& resetConnection);

}  // namespace Morvenn::Net::MvServerProxy::Hub
