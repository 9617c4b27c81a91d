#include "tests/fakes/CapturedConsole.h"

#include <QByteArray>
#include <QTemporaryFile>

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "tests/fakes/Secrets.h"

namespace vynlex {
namespace {

QByteArray contents(int file)
{
    QByteArray all;
    std::array<char, 4096> block{};
    for (off_t offset = 0;;) {
        const ssize_t count = pread(file, block.data(), block.size(), offset);
        if (count <= 0)
            return all;
        all.append(block.data(), count);
        offset += count;
    }
}

/// What is captured shows in no log, so it is looked through here.
void requireNoSecrets(const QByteArray &output)
{
    if (!secrets::areShownIn(output))
        return;
    std::fprintf(stderr, "A secret has been written: %s\n", output.constData());
    std::_Exit(EXIT_FAILURE); // at once: qFatal would have Qt Test look for a stack trace
}

} // namespace

CapturedConsole::CapturedConsole()
{
    std::fflush(stdout);
    m_file = memfd_create("console", 0);
    m_savedStdout = dup(STDOUT_FILENO);
    dup2(m_file, STDOUT_FILENO);
}

CapturedConsole::~CapturedConsole()
{
    std::fflush(stdout);
    dup2(m_savedStdout, STDOUT_FILENO);
    close(m_savedStdout);
    requireNoSecrets(contents(m_file));
    close(m_file);
}

QStringList CapturedConsole::lines() const
{
    std::fflush(stdout);
    QStringList lines = QString::fromUtf8(contents(m_file)).split(u'\n');
    lines.removeLast(); // what follows the last line feed: an unfinished line, or nothing
    return lines;
}

QString fatalErrorOf(const std::function<void()> &body)
{
    const int file = memfd_create("stderr", 0);
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        const rlimit noCore{0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        std::signal(SIGABRT, SIG_DFL); // Qt Test's own handler would print a stack trace
        dup2(file, STDERR_FILENO);
        body();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const QByteArray text = contents(file);
    close(file);
    requireNoSecrets(text);
    if (!WIFSIGNALED(status) || WTERMSIG(status) != SIGABRT || !text.startsWith("Fatal error: "))
        return {};
    return QString::fromUtf8(text).trimmed();
}

} // namespace vynlex
