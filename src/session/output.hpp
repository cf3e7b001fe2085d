// Standard output as the session writes it: every byte through one writer that
// waits while a non-blocking descriptor is full and remembers the first write
// that fails, so that a closed pipe or a full disk ends the session at once.
#pragma once

#include <cstdio>

namespace output {

// Routes stdout through that writer; called once, before anything is printed.
// A closed pipe then shows as a failed write rather than a fatal SIGPIPE.
void install();

// True once a write to standard output has failed; later output is dropped.
bool failed();

// The descriptor a stream writes to, for copies that bypass stdio (flushed
// first): 1 for the session's stdout, whose writer stdio cannot name, else the
// stream's own; -1 for a stream with none.
int descriptor_of(std::FILE* stream);

}  // namespace output
