#pragma once

#include <QStringList>

#include <functional>

namespace vynlex {

/// Collects what the process writes to standard output while this object lives, and passes nothing on.
///
/// Works on the file descriptor, so that lines from every thread and every library are seen. One at a time. A secret of
/// the tests (Secrets.h) in them ends the test program.
class CapturedConsole {
public:
    CapturedConsole();
    ~CapturedConsole();
    CapturedConsole(const CapturedConsole &) = delete;
    CapturedConsole &operator=(const CapturedConsole &) = delete;

    /// Every complete line so far, without its line feed.
    [[nodiscard]] QStringList lines() const;

private:
    int m_file = -1;
    int m_savedStdout = -1;
};

/// Runs `body` in a child process and returns what it wrote to standard error if it ended by a deliberate process end;
/// a null string if it came back or ended otherwise.
[[nodiscard]] QString fatalErrorOf(const std::function<void()> &body);

} // namespace vynlex
