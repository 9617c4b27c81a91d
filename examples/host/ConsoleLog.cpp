#include "ConsoleLog.h"

#include <unistd.h>

#include <cstdio>

namespace host {

ConsoleLog::ConsoleLog(const QString &path)
    : m_file(path)
    , m_reader(path)
{
    if (!m_file.open(QIODevice::WriteOnly) || !m_reader.open(QIODevice::ReadOnly))
        return;
    std::fflush(stdout);
    m_ownOutput = dup(STDOUT_FILENO);
    dup2(m_file.handle(), STDOUT_FILENO);
}

ConsoleLog::~ConsoleLog()
{
    if (m_ownOutput < 0)
        return;
    std::fflush(stdout);
    dup2(m_ownOutput, STDOUT_FILENO);
    close(m_ownOutput);
}

QStringList ConsoleLog::newLines()
{
    return QString::fromUtf8(m_reader.readAll()).split(u'\n', Qt::SkipEmptyParts);
}

} // namespace host
