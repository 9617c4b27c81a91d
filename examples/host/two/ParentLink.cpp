#include "two/ParentLink.h"

#include <QCoreApplication>
#include <QFile>

#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "platform/dispatch/MainQueue.h"

using namespace std::chrono_literals;
using namespace vynlex;

namespace host {
namespace {

/// Time for an orderly end.
constexpr auto farewell = 3s;

/// Takes standard output away from everybody else.
int ownOutput()
{
    std::fflush(stdout);
    const int output = dup(STDOUT_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    return output;
}

void send(int output, const QByteArray &line)
{
    QFile file;
    if (file.open(output, QIODevice::WriteOnly))
        file.write(line + '\n');
}

} // namespace

ParentLink::ParentLink(std::function<QByteArray(const QByteArray &)> answer)
{
    const std::function<void(const QByteArray &)> deliver =
        m_lifetime.guard([answer = std::move(answer), output = ownOutput()](const QByteArray &request) {
            send(output, answer(request));
        });
    // Never joined: nothing ends a read that waits for a parent who has nothing to say.
    std::thread([deliver] {
        QByteArray received;
        std::array<char, 4096> block{};
        for (ssize_t count = 0; (count = read(STDIN_FILENO, block.data(), block.size())) > 0;) {
            received.append(block.data(), count);
            for (qsizetype end = 0; (end = received.indexOf('\n')) >= 0; received.remove(0, end + 1))
                MainQueue::async([deliver, request = received.left(end)] { deliver(request); });
        }
        MainQueue::async([] { QCoreApplication::quit(); });
        std::this_thread::sleep_for(farewell);
        std::_Exit(EXIT_FAILURE);
    }).detach();
}

} // namespace host
