// Whether anybody reads what the program writes.
#pragma once

namespace Agent {

/// Lets a write to a pipe or connection that nobody reads any more, or beyond the largest file,
/// fail, where it would end the program.
void ignoreWriteSignals();
/// False when `file` is a pipe or a connection that nobody reads any more.
bool hasReader(int file);

}  // namespace Agent
