// Whether what the program writes arrives.
#pragma once

namespace Agent {

/// Lets a write to a pipe or connection that nobody reads any more, or beyond the largest file,
/// fail, where it would end the program.
void ignoreWriteSignals();
/// False when `file` is a pipe or a connection that nobody reads any more.
bool hasReader(int file);
/// Writes what standard output has gathered. Throws a `Failure` with the system's cause when that
/// cannot be done; what is written later is tried again.
void flushOut();

}  // namespace Agent
