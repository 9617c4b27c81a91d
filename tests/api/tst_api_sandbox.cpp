#include <QTest>

#include <QTemporaryDir>

#include "SandboxProcess.h"
#include "api/VLApiManager.h"
#include "platform/device/Platform.h"
#include "platform/net/CurlHttpTransport.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

// People of the sandbox's seed.
const QString asha = u"65b20a005eed000000000001"_s;
const QString rohan = u"65b20a005eed000000000002"_s;
const QString wandaWhoWaits = u"65b20a005eed00000000002c"_s;

template<typename Answer> using Call = std::function<void(VLApiCompletion<Answer>)>;

template<typename Answer> VLApiResult<Answer> outcomeOf(const Call<Answer> &call)
{
    std::optional<VLApiResult<Answer>> outcome;
    call([&](const VLApiResult<Answer> &result) { outcome = result; });
    if (!QTest::qWaitFor([&] { return outcome.has_value(); }, 70'000))
        qFatal("no outcome");
    return *outcome;
}

template<typename Answer> Answer answerOf(const Call<Answer> &call)
{
    const auto outcome = outcomeOf<Answer>(call);
    if (!outcome)
        qFatal("%s (status %d)", qPrintable(outcome.error().errorMessage()), outcome.error().status());
    return *outcome;
}

} // namespace

/// The kit and the sandbox understand each other: every operation, over the deployment's own host name.
class TestApiSandbox : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_data.isValid());
        qputenv("XDG_DATA_HOME", m_data.path().toUtf8());
        auto sandbox = examples::SandboxProcess::start(QStringLiteral(SANDBOX_PROGRAM));
        QVERIFY2(sandbox, qPrintable(sandbox ? QString() : sandbox.error()));
        m_sandbox = std::move(*sandbox);
        Platform platform;
        platform.makeHttpTransport = [](const HttpSessionConfiguration &configuration) {
            return std::make_unique<CurlHttpTransport>(configuration);
        };
        Platform::install(std::move(platform));
    }
    void init() { m_manager = std::make_unique<VLApiManager>(); }
    void cleanup() { m_manager.reset(); }
    void cleanupTestCase() { m_sandbox.reset(); }

    void somebodySignsInFindsAFriendAndWrites()
    {
        signIn(asha);
        const auto uploaded = answerOf<VLSuccessResponse>([&](auto completion) {
            m_manager->uploadContacts({{{}, u"Rohan "_s, {}, u"+91 90000-01002"_s}, {{}, u"Me"_s, {}, u"9000001001"_s}},
                                      completion);
        });
        QVERIFY(uploaded.success == true);

        const auto contacts = answerOf<VLContactsResponse>([&](auto completion) {
            m_manager->getContacts({{u"search"_s, u"roh"_s}}, completion);
        });
        QVERIFY(contacts.contacts && contacts.contacts->size() == 1);
        QVERIFY(contacts.contacts->front().id == rohan);

        const auto calls = answerOf<VLRecentContactsResponse>([&](auto completion) {
            m_manager->getRecentContacts(u"one_to_one_call,group_call"_s, 0, 200, completion);
        });
        QVERIFY(!calls.callHistory.empty());
        QVERIFY(calls.callHistory.front().members && calls.callHistory.front().ownerPhoneNo);

        const auto thread =
            answerOf<VLChatThread>([&](auto completion) { m_manager->getPrivateChatThread(rohan, asha, completion); });
        QVERIFY(thread.members && thread.members->size() == 2);
        QVERIFY(thread.modifiedAt && thread.modifiedAt->date().year() >= 2024);

        const QString text = u"hi-IN## \"नमस्ते\" \\ R&D"_s;
        const auto sent = answerOf<VLChatMessage>(
            [&](auto completion) { m_manager->sendChatMessage(thread.id, text, {}, completion); });
        QCOMPARE(sent.creatorId, asha);
        QCOMPARE(sent.messageText, text);
        const auto page =
            answerOf<VLThreadChatMessages>([&](auto completion) { m_manager->getChatMessages(thread.id, completion); });
        QVERIFY(page.messages && !page.messages->empty());
        QVERIFY(page.messages->front() == sent);
    }

    void aRefusalIsToldInTheBackendsWords()
    {
        const auto stranger =
            outcomeOf<VLTokenResponse>([&](auto completion) { m_manager->getJWToken(u"no token"_s, completion); });
        QVERIFY(!stranger);
        QCOMPARE(stranger.error().status(), 401);

        const Call<VLContactsResponse> getContacts = [&](auto completion) { m_manager->getContacts({}, completion); };
        QCOMPARE(outcomeOf(getContacts).error().status(), 401); // not signed in
        signIn(wandaWhoWaits);
        const auto waiting = outcomeOf(getContacts);
        QVERIFY(!waiting);
        QCOMPARE(waiting.error().status(), 467);
        QCOMPARE(waiting.error().errorMessage(), u"Your request to join was rejected."_s);

        signIn(asha);
        const auto nowhere = outcomeOf<VLThreadChatMessages>(
            [&](auto completion) { m_manager->getChatMessages(u"no thread?"_s, completion); });
        QVERIFY(!nowhere);
        QCOMPARE(nowhere.error().status(), 404);
        QVERIFY(nowhere.error().errorMessage() != u"Unknown Error"_s);
    }

private:
    void signIn(const QString &userId)
    {
        const auto token = answerOf<VLTokenResponse>(
            [&](auto completion) { m_manager->getJWToken(u"web-token-"_s + userId, completion); });
        QVERIFY(token.jwt);
        m_manager->setCredentials(userId, *token.jwt);
    }

    const QTemporaryDir m_data;
    std::unique_ptr<examples::SandboxProcess> m_sandbox;
    std::unique_ptr<VLApiManager> m_manager;
};

QTEST_GUILESS_MAIN(TestApiSandbox)
#include "tst_api_sandbox.moc"
