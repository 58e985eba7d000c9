// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <string_view>

// The process's printed lines, on standard output and standard error. A reader that is slow or gone
// never holds up the process: what a pipe or terminal does not take at once is dropped, and the
// number of dropped lines is told in a line of its own as soon as writing works again. Any thread
// may print.

// Makes both descriptors this process's own where that can be done, so that writing to them never
// waits and nobody else's writing is changed. A closed one is opened on /dev/null, or a connection
// would get its number. A pipe without a reader no longer ends the process (SIGPIPE). Call it
// before anything is printed or opened.
void OpenConsole();

// Gathers what its thread prints to standard output, and writes it when it ends: one write(2) costs
// as much as making a dozen lines. A batch within another leaves the writing to that one.
class ConsoleBatch {
public:
    ConsoleBatch();
    ~ConsoleBatch();
    ConsoleBatch(const ConsoleBatch&) = delete;
    ConsoleBatch& operator=(const ConsoleBatch&) = delete;
};

// Adds to what the calling thread's batch has gathered. 4096 bytes are written at once, which do
// not mix with other threads' (pipe(7), PIPE_BUF).
void ConsoleAdd(std::string_view text);

// Writes what the calling thread has gathered so far; to be called before it waits.
void ConsoleFlush();

// A batch of one text.
void ConsoleWrite(std::string_view text);

// Writes a text to standard error.
void ConsoleWriteError(std::string_view text);

// Whether both outputs take lines now. A program started while they do not may wait for ever.
bool ConsoleIsReady();
