// Reading 10,000 contacts, beside libebook alone.

#include "tests/platform/contacts/EvolutionServer.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include "platform/contacts/EvolutionAddressBook.h"
#include "platform/contacts/VCards.h"

using namespace vynlex;

namespace {

/// Two numbers each, and what else a card has.
const QList<QByteArray> &cards()
{
    static const QList<QByteArray> all = [] {
        QList<QByteArray> made;
        for (int i = 0; i < 10'000; ++i)
            made.append(QStringLiteral("BEGIN:VCARD\r\nVERSION:3.0\r\nN:शर्मा %1;आशा;;;\r\nFN:आशा शर्मा %1\r\n"
                                       "TEL;TYPE=CELL,VOICE:+91 98765 %2\r\nitem1.TEL;TYPE=HOME:022 555 %2\r\n"
                                       "item1.X-ABLabel:_$!<Home>!$_\r\nEMAIL;TYPE=INTERNET:asha%1@example.com\r\n"
                                       "ADR;TYPE=HOME:;;1 Example Road;Mumbai;;400001;India\r\nEND:VCARD\r\n")
                            .arg(i)
                            .arg(i, 5, 10, QLatin1Char('0'))
                            .toUtf8());
        return made;
    }();
    return all;
}

void libebookParsesCards(benchmark::State &state)
{
    for (auto _ : state)
        for (const QByteArray &card : cards()) {
            const GObjectPointer<EVCard> read(e_vcard_new_from_string(card.constData()));
            benchmark::DoNotOptimize(e_vcard_get_attributes(read.get()));
        }
}

void kitReadsCards(benchmark::State &state)
{
    const QByteArray text = cards().join();
    for (auto _ : state)
        benchmark::DoNotOptimize(contactsInVCards(text));
}

void libebookReadsServer(benchmark::State &state)
{
    for (auto _ : state) {
        GErrorSlot error;
        const GObjectPointer<ESourceRegistry> sources(e_source_registry_new_sync(nullptr, error));
        const GObjectPointer<ESource> source(e_source_registry_ref_builtin_address_book(sources.get()));
        const GObjectPointer<EClient> client(
            e_book_client_connect_sync(source.get(), static_cast<guint32>(-1), nullptr, error));
        GSList *contacts = nullptr;
        if (!e_book_client_get_contacts_sync(E_BOOK_CLIENT(client.get()), "(contains \"x-evolution-any-field\" \"\")",
                                             &contacts, nullptr, error))
            state.SkipWithError(qPrintable(error.text()));
        for (GSList *each = contacts; each; each = each->next)
            benchmark::DoNotOptimize(e_vcard_get_attributes(E_VCARD(each->data)));
        g_slist_free_full(contacts, g_object_unref);
    }
}

void kitReadsServer(benchmark::State &state)
{
    for (auto _ : state) {
        int count = 0;
        if (const auto result = EvolutionAddressBook().read([&](const AddressBookContact &) { ++count; }); !result)
            state.SkipWithError(qPrintable(result.error()));
        else if (count != cards().size())
            state.SkipWithError("some are missing");
    }
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    const auto add = [](const char *name, auto *function) {
        benchmark::RegisterBenchmark(name, function)
            ->Unit(benchmark::kMillisecond)
            ->MeasureProcessCPUTime()
            ->UseRealTime();
    };
    add("cards, libebook", libebookParsesCards);
    add("cards, kit", kitReadsCards);
    EvolutionServer server;
    if (EvolutionServer::isInstalled() && server.start() && EvolutionServer::add(cards()).isEmpty()) {
        add("server, libebook", libebookReadsServer);
        add("server, kit", kitReadsServer);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
