// The messages of a chat in their table: opening a chat and adding to it, beside a model that does nothing but tell its
// view. No view is attached; what one asks for on a screenful is asked for here.

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include "api/VLApiManager.h"
#include "chat/ChatViewModel.h"
#include "language/LanguageTranslation.h"
#include "screens/ChatVC.h"
#include "tests/fakes/TestPlatform.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

constexpr int page = 150; ///< What is fetched of a chat.
constexpr int screenful = 12;
constexpr int longChat = 10'000;
constexpr int roleCount = 8;

VLChatMessage message(int number)
{
    VLChatMessage made;
    made.id = QString::number(number);
    made.createdAtString = u"2026-01-31T09:15:00.000+0000"_s;
    made.creatorsName = u"Asha"_s;
    made.creatorsLName = u"Patel"_s;
    made.messageText = u"hi-IN## मुझे दो रातों के लिए एक कमरा चाहिए।"_s;
    made.isIncomingMessage = number % 2 == 0;
    return made;
}

std::vector<VLChatMessage> messages(int count)
{
    std::vector<VLChatMessage> all;
    for (int number = 0; number < count; ++number)
        all.push_back(message(number));
    return all;
}

/// Has rows and says so.
class BareModel : public QAbstractListModel {
public:
    [[nodiscard]] int rowCount(const QModelIndex & = {}) const override { return m_rows; }
    [[nodiscard]] QVariant data(const QModelIndex &index, int) const override { return index.row(); }

    void show(int rows)
    {
        beginResetModel();
        m_rows = rows;
        endResetModel();
    }
    void append()
    {
        beginInsertRows({}, m_rows, m_rows);
        ++m_rows;
        endInsertRows();
    }

private:
    int m_rows = 0;
};

/// As a view that shows the end of the list.
void readScreenful(const QAbstractItemModel &model)
{
    for (int row = std::max(0, model.rowCount() - screenful); row < model.rowCount(); ++row) {
        for (int role = 0; role < roleCount; ++role)
            benchmark::DoNotOptimize(model.data(model.index(row, 0), Qt::UserRole + role));
    }
}

/// The controller with all it is made of, its table, a screenful, and its end.
void openChat(benchmark::State &state)
{
    const TestPlatform platform;
    VLApiManager api;
    LanguageTranslation languages;
    ChatViewModel viewModel(api);
    viewModel.aryMessages = messages(page);
    for ([[maybe_unused]] const auto step : state) {
        ChatVC screen(viewModel, api, languages);
        screen.loadViewIfNeeded();
        readScreenful(*screen.chatTableView());
    }
}

void openTable(benchmark::State &state)
{
    const std::vector<VLChatMessage> all = messages(page);
    for ([[maybe_unused]] const auto step : state) {
        ChatTable table(all);
        table.reload();
        readScreenful(table);
    }
}

void openBareModel(benchmark::State &state)
{
    for ([[maybe_unused]] const auto step : state) {
        BareModel model;
        model.show(page);
        readScreenful(model);
    }
}

/// `Grow` adds a row to `model`, whose view hears of it.
template<typename Model, typename Grow> void append(benchmark::State &state, Model &model, const Grow &grow)
{
    int heard = 0;
    QObject::connect(&model, &QAbstractItemModel::rowsInserted, &model, [&] { ++heard; });
    QObject::connect(&model, &QAbstractItemModel::dataChanged, &model, [&] { ++heard; });
    for ([[maybe_unused]] const auto step : state)
        grow();
    if (heard < state.iterations())
        state.SkipWithError("not every row was told");
}

void appendToTable(benchmark::State &state)
{
    std::vector<VLChatMessage> all = messages(longChat);
    all.reserve(2 * longChat);
    const VLChatMessage next = message(longChat);
    ChatTable table(all);
    table.reload();
    append(state, table, [&] {
        all.push_back(next);
        table.reload();
    });
}

void appendToBareModel(benchmark::State &state)
{
    std::vector<VLChatMessage> all = messages(longChat);
    all.reserve(2 * longChat);
    const VLChatMessage next = message(longChat);
    BareModel model;
    model.show(longChat);
    append(state, model, [&] {
        all.push_back(next);
        model.append();
    });
}

} // namespace

BENCHMARK(openChat);
BENCHMARK(openTable);
BENCHMARK(openBareModel);
BENCHMARK(appendToTable)->Iterations(longChat);
BENCHMARK(appendToBareModel)->Iterations(longChat);

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
