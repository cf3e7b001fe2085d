// Standard output as the session writes it: every byte through one writer that
// waits while a non-blocking descriptor is full and remembers the first write
// that fails, so that a closed pipe or a full disk ends the session at once.
#pragma once

namespace output {

// Routes stdout through that writer; called once, before anything is printed.
// A closed pipe then shows as a failed write rather than a fatal SIGPIPE.
void install();

// True once a write to standard output has failed; later output is dropped.
bool failed();

}  // namespace output
