// One keystroke in the home screen's search bar, from the text to the reloaded table, beside a bare loop over names
// that are in lower case already.

#include <benchmark/benchmark.h>

#include "screens/UserTable.h"

using namespace vynlex;

namespace {

/// What somebody types: it finds nearly all, one in ten, nobody.
const char *const texts[] = {"a", "sha", "zz"};

std::vector<User> people(std::int64_t count)
{
    const QString givenNames[] = {"Asha", "Brian", "कमला", "Dev", "Elena", "Farid", "Gita", "Harold", "Indira", "José"};
    const QString familyNames[] = {"Rao", "Smith", "Patel", "शर्मा", "Fernandes", "Okafor", "Singh"};
    std::vector<User> users;
    for (std::int64_t i = 0; i < count; ++i) {
        const QString name = givenNames[i % std::size(givenNames)] + ' ' +
                             familyNames[i / std::size(givenNames) % std::size(familyNames)];
        users.push_back({{}, name + ' ', {}, "+91 98765-" + QString::number(i)});
    }
    return users;
}

void keystroke(benchmark::State &state)
{
    const auto users = std::make_shared<const UserList>(people(state.range(0)));
    const QString text = texts[state.range(1)];
    UserTable table;
    for ([[maybe_unused]] const auto step : state)
        table.reload(users, users->placesOfNamesWith(text));
    state.counters["found"] = table.rowCount();
}

void bareLoop(benchmark::State &state)
{
    std::vector<QString> names;
    for (const User &user : people(state.range(0)))
        names.push_back(user.name.toLower());
    const QString text = texts[state.range(1)];
    std::vector<int> places;
    for ([[maybe_unused]] const auto step : state) {
        places.clear();
        for (std::size_t place = 0; place < names.size(); ++place) {
            if (names[place].contains(text))
                places.push_back(static_cast<int>(place));
        }
        benchmark::DoNotOptimize(places.data());
    }
    state.counters["found"] = static_cast<double>(places.size());
}

/// What a list costs when it comes.
void makeReady(benchmark::State &state)
{
    const std::vector<User> users = people(state.range(0));
    for ([[maybe_unused]] const auto step : state)
        benchmark::DoNotOptimize(UserList(users));
}

const std::vector<std::int64_t> sizes{1000, 10'000, 100'000};

} // namespace

BENCHMARK(keystroke)->ArgsProduct({sizes, {0, 1, 2}})->Unit(benchmark::kMicrosecond);
BENCHMARK(bareLoop)->ArgsProduct({sizes, {0, 1, 2}})->Unit(benchmark::kMicrosecond);
BENCHMARK(makeReady)->ArgsProduct({sizes})->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
