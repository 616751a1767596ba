// What the command line needs of the system: its standard streams and Ctrl+C.
#pragma once

#include <cstdio>

// Bytes go through the standard streams as they are; a reader that has gone away makes writing fail, and does not end
// the program.
void prepareStandardStreams();
bool isTerminal(std::FILE *stream);
// Takes up what has come on the standard input: at most `capacity` bytes, 0 when nothing came for a while or after an
// interrupt, -1 at the end, -2 when it cannot be read.
long long readStandardInput(char *data, long long capacity);

// From now on Ctrl+C and a request to end set interrupted(). A second one ends the program at once.
void watchInterrupts();
// Any thread.
bool interrupted();
