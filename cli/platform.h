// What the command line needs of the system: its standard streams and Ctrl+C.
#pragma once

#include <cstdio>

constexpr int kStandardInput = 0; // its descriptor

// Bytes go through the standard streams as they are; a reader that has gone away makes writing fail, and does not end
// the program. A stream that came closed fails too: nothing that is opened later takes its place. First in main().
void prepareStandardStreams();
bool isTerminal(std::FILE *stream);
// Takes up what has come through a pipe: at most `capacity` bytes, 0 when nothing came for a while or after an
// interrupt, -1 at the end, -2 when it cannot be read.
long long readPipe(int descriptor, char *data, long long capacity);

// From now on Ctrl+C and a request to end set interrupted(). A second one ends the program at once.
void watchInterrupts();
// The second one sets interruptedTwice() instead, and the third ends the program.
void allowSecondInterrupt();
// Any thread.
bool interrupted();
bool interruptedTwice();
