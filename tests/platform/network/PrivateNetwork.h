#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace vynlex {

/// A network of the test's own, in which it may do what it likes: nothing but an idle loopback link at first.
class PrivateNetwork {
public:
    /// Runs the test program again within one, if the machine allows it. First thing in `main`, before any thread.
    static void enter(char **argv)
    {
        if (isEntered() || std::system("unshare -rn ip link set lo up 2>/dev/null") != 0)
            return;
        setenv(variable, "1", 1);
        char program[] = "unshare";
        char options[] = "-rn";
        char path[4096] = {};
        char *const self = readlink("/proc/self/exe", path, sizeof path - 1) > 0 ? path : argv[0];
        std::vector<char *> arguments{program, options, self};
        while (*++argv)
            arguments.push_back(*argv);
        arguments.push_back(nullptr);
        execvp(program, arguments.data());
        unsetenv(variable);
    }

    [[nodiscard]] static bool isEntered() { return getenv(variable) != nullptr; }

    /// `ip` of iproute2. What it complained of; empty if it was content.
    [[nodiscard]] static QString ip(const QString &arguments)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QStringLiteral("ip"), arguments.split(u' '));
        if (!process.waitForFinished())
            return process.errorString();
        const QString output = QString::fromUtf8(process.readAll());
        return process.exitCode() == 0 ? QString() : arguments + QStringLiteral(": ") + output;
    }

    /// Makes "cable", with an address and no route; its other end is "plug". Whether the machine can.
    [[nodiscard]] static bool plugInCable()
    {
        bool can = isEntered();
        for (const char *const arguments : {"link add cable type veth peer name plug", "link set plug up",
                                            "link set cable up", "address add 192.0.2.2/24 dev cable"})
            can = can && ip(QString::fromLatin1(arguments)).isEmpty();
        return can;
    }

private:
    static constexpr const char *variable = "VYNLEX_PRIVATE_NETWORK";
};

} // namespace vynlex
