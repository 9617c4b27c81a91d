#pragma once

#include <QFile>
#include <QStringList>

namespace host {

/// Keeps what the process writes to standard output in a file, while it lives. One at a time.
class ConsoleLog {
public:
    /// Without a file that can be written, standard output stays where it is.
    explicit ConsoleLog(const QString &path);
    ~ConsoleLog();
    ConsoleLog(const ConsoleLog &) = delete;
    ConsoleLog &operator=(const ConsoleLog &) = delete;

    /// The lines since the last call.
    [[nodiscard]] QStringList newLines();

private:
    QFile m_file;
    QFile m_reader; ///< Apart, because whoever writes moves the file's place on.
    int m_ownOutput = -1;
};

} // namespace host
