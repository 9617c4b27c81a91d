#include <QTest>

#include "api/VLApiManager.h"
#include "chat/ChatViewModel.h"
#include "chat/WireText.h"
#include "tests/fakes/Secrets.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

/// Keeps what the model held each time.
class Screen final : public VLChatDeleagate {
public:
    explicit Screen(const ChatViewModel &model)
        : m_model(model)
    {
    }
    void refreshChatData() override { shown << ids(m_model); }

    static QString ids(const ChatViewModel &model)
    {
        QStringList all;
        for (const VLChatMessage &message : model.aryMessages)
            all << message.id + (message.isIncomingMessage ? u"<"_s : QString());
        return all.join(u' ');
    }

    QStringList shown;

private:
    const ChatViewModel &m_model;
};

VLChatMessage message(const QString &id, const QString &creator)
{
    VLChatMessage made;
    made.id = id;
    made.threadId = u"elsewhere"_s;
    made.creatorId = creator;
    return made;
}

} // namespace

class TestChatModel : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_platform = std::make_unique<TestPlatform>();
        m_api = std::make_unique<VLApiManager>();
        m_api->setCredentials(u"me"_s, secrets::jwt);
        m_model = std::make_unique<ChatViewModel>(*m_api);
        m_screen = std::make_shared<Screen>(*m_model);
        m_model->delegate = m_screen;
    }

    void wireTextIsLanguageAndWords()
    {
        for (const auto &[text, wireText] : {std::pair(u"hi-IN##नमस्ते # 1"_s, WireText{u"hi-IN"_s, u"नमस्ते # 1"_s}),
                                             {u"##"_s, {u""_s, u""_s}},
                                             {u"te-IN###1"_s, {u"te-IN"_s, u"#1"_s}}}) {
            QCOMPARE(decodeWireText(text), wireText);
            QCOMPARE(encodeWireText(wireText), text);
        }
        for (const QString &text : {u"hi-IN#hello"_s, u"hi-IN##a##b"_s, QString()}) // without one mark
            QCOMPARE(decodeWireText(text), (WireText{u"en-IN"_s, text}));
    }

    void aChatFromOpeningToSending()
    {
        m_model->openPrivateThread(u"asha"_s);
        QCOMPARE(m_model->receivedID, u"asha"_s);
        QCOMPARE(network().lastRequest().body, R"({"admins":["me"],"context":"me","members":["asha","me"]})");
        m_model->receiveSocketMessage(message(u"lost"_s, u"asha"_s)); // before there is a thread
        answerThread(u"T1"_s);
        answerMessages(u"T1"_s, {u"newest"_s, u"middle"_s, u"oldest"_s});

        m_model->receiveSocketMessage(message(u"hers"_s, u"asha"_s));
        m_model->receiveSocketMessage(message(u"another's"_s, u"ravi"_s));
        m_model->receiveSocketMessage(message(u"own"_s, u"me"_s));
        m_model->messageSent(message(u"sent"_s, u"me"_s));
        m_model->messageSent(tl::unexpected(VLApiRequestError(VLApiRequestError::Case::serverError)));
        const QString fetched = u"oldest middle newest"_s;
        QCOMPARE(m_screen->shown,
                 (QStringList{u"lost<"_s, fetched, fetched + u" hers<"_s, fetched + u" hers< sent"_s}));

        m_screen.reset();
        m_model->receiveSocketMessage(message(u"unseen"_s, u"asha"_s));
        QCOMPARE(Screen::ids(*m_model), fetched + u" hers< sent unseen<"_s);
    }

    void theNextChatShowsThePreviousOneUntilItHasLoaded()
    {
        m_model->openPrivateThread(u"asha"_s);
        answerThread(u"T1"_s);
        answerMessages(u"T1"_s, {u"a"_s});
        m_model->fetchMessages();
        const int late = network().requestCount() - 1;

        m_model->openPrivateThread(u"ravi"_s);
        m_model->receiveSocketMessage(message(u"late"_s, u"asha"_s));
        network().answer(late, 200, R"({"messages":[]})");
        network().answer(late + 1, 500);
        QCOMPARE(m_model->threadID, u"T1"_s);
        QCOMPARE(m_screen->shown, QStringList{u"a"_s});

        m_model->openPrivateThread(u"ravi"_s);
        answerThread(u"T2"_s);
        network().answer(network().requestCount() - 1, 200, R"({"messages":[{"_id":"without a thread"}]})");
        QCOMPARE(m_model->threadID, u"T2"_s);
        QCOMPARE(m_screen->shown, (QStringList{u"a"_s, QString()}));
    }

    void anOlderPageDoesNotReplaceANewerOne()
    {
        m_model->openPrivateThread(u"asha"_s);
        answerThread(u"T1"_s);
        const int slow = network().requestCount() - 1;
        m_model->openPrivateThread(u"asha"_s);
        answerThread(u"T1"_s);
        answerMessages(u"T1"_s, {u"new"_s, u"a"_s});
        network().answer(slow, 200, R"({"messages":[{"_id":"a"}]})");
        QCOMPARE(m_screen->shown, QStringList{u"a new"_s});
    }

    void anAnswerToAModelThatIsGoneReachesNobody()
    {
        m_model->openPrivateThread(u"asha"_s);
        m_model.reset();
        answerThread(u"T1"_s);
        QCOMPARE(network().requestCount(), 1);
    }

private:
    [[nodiscard]] FakeHttpNetwork &network() const { return *m_platform->network; }

    void answerThread(const QString &id)
    {
        network().answer(network().requestCount() - 1, 200, "{\"_id\":\"" + id.toUtf8() + "\"}");
    }

    void answerMessages(const QString &threadId, const QStringList &ids)
    {
        QCOMPARE(network().lastRequest().url.path(), u"/api/chat/thread/"_s + threadId + u"/messages"_s);
        QByteArrayList messages;
        for (const QString &id : ids)
            messages << "{\"_id\":\"" + id.toUtf8() + "\",\"threadId\":\"T\",\"createdBy\":\"asha\"}";
        network().answer(network().requestCount() - 1, 200, "{\"messages\":[" + messages.join(',') + "]}");
    }

    std::unique_ptr<TestPlatform> m_platform;
    std::unique_ptr<VLApiManager> m_api;
    std::unique_ptr<ChatViewModel> m_model;
    std::shared_ptr<Screen> m_screen;
};

template struct vynlex::InSuite<TestChatModel>;

SUITE_MAIN(QCoreApplication)

#include "tst_chat_model.moc"
