#pragma once

#include <QByteArray>
#include <QTextStream>

#include <algorithm>
#include <chrono>
#include <vector>

/// How long `work` takes.
template<typename Work> double milliseconds(Work &&work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

/// What a program says of the times that it took, a line for each kind: for readers, or with `--json` as one object a
/// line, which `scripts/bench` puts into its table.
class Figures {
public:
    Figures(int argc, char **argv)
        : m_asJson(argc > 1 && QByteArray(argv[1]) == "--json")
    {
    }

    /// `values` in milliseconds, in any order; at least one.
    void print(const QByteArray &what, std::vector<double> values) const
    {
        std::ranges::sort(values);
        const auto at = [&](double share) {
            return QByteArray::number(values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))],
                                      'g', 4);
        };
        QTextStream out(stdout);
        if (m_asJson)
            out << R"({"what":")" << what << R"(","count":)" << values.size() << R"(,"median":)" << at(0.5)
                << R"(,"p95":)" << at(0.95) << R"(,"p99":)" << at(0.99) << R"(,"longest":)" << at(1) << "}" << Qt::endl;
        else
            out << what << ": median " << at(0.5) << " ms, 95th percentile " << at(0.95) << " ms, 99th " << at(0.99)
                << " ms, longest " << at(1) << " ms" << Qt::endl;
    }

private:
    bool m_asJson;
};
