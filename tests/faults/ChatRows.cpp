#include "platform/device/Platform.h"
#include "tests/faults/FaultRow.h"
#include "tests/faults/Phone.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace faults {
namespace {

// Of the socket's messages: the first comes later than networks and servers are back that are gone for a moment.
constexpr qint64 untilFirstMs = 6000;
constexpr qint64 untilSecondMs = 1500;
constexpr qint64 untilLostMs = 3000;

/// Opens the chat of two who have written to each other.
class OpeningRow : public FaultRow {
public:
    OpeningRow(Laboratory &laboratory, const QString &title, VLApiServer deployment, const QString &failingPath)
        : m_phone(laboratory, 1, deployment)
    {
        name = title;
        host = deployment.rawValue();
        path = failingPath;
    }

    void prepare() override
    {
        m_phone.setUp();
        when([this] { return m_phone.isSignedIn(); }, [] {});
    }
    void prepareAgain() override
    {
        m_chat->backAction();
        when([this] { return m_phone.showsHomeAlone(); },
             [this] { // as a process begins, or there would be no telling what has come
                 m_phone.chat.threadID.clear();
                 m_phone.chat.aryMessages.clear();
             });
    }
    void act() override { m_chat = m_phone.openChat(2); }
    void actAgain() override
    {
        m_chat->backAction();
        when([this] { return m_phone.showsHomeAlone(); }, [this] { act(); });
    }
    [[nodiscard]] bool cameThrough() const override
    {
        return m_phone.chat.isThreadKnown() && m_chat->chatTableView()->rowCount() > 0;
    }
    [[nodiscard]] QString complaint() const override
    {
        return m_chat->chatTableView()->rowCount() == 0 ? QString() : u"messages of nobody"_s;
    }

protected:
    [[nodiscard]] bool isAtRest() const override { return m_phone.isQuiet(); }

private:
    Phone m_phone;
    std::shared_ptr<ChatVC> m_chat;
};

/// Records a message, and sends it.
class SendRow final : public FaultRow {
public:
    explicit SendRow(Laboratory &laboratory)
        : m_phone(laboratory, 5, VLApiServer::tenantGroups)
    {
        name = u"send"_s;
        host = VLApiServer(VLApiServer::tenantGroups).rawValue();
        path = u"/api/chat/thread/*"_s;
    }

    void prepare() override
    {
        m_phone.setUp();
        when([this] { return m_phone.isSignedIn(); }, [this] { m_chat = m_phone.openChat(6); });
        when([this] { return m_phone.chat.isThreadKnown() && m_phone.isQuiet(); }, [this] { record(); });
    }
    void prepareAgain() override { record(); }
    void act() override
    {
        m_messagesBefore = messages();
        m_chat->stopRecordingORsendMessageAction();
    }
    void actAgain() override
    {
        record();
        when([] { return true; }, [this] { act(); });
    }
    [[nodiscard]] bool cameThrough() const override { return messages() == m_messagesBefore + 1 && isAtRest(); }
    [[nodiscard]] QString complaint() const override
    {
        if (m_chat->panelState() != ChatVC::PanelState::Idle)
            return u"the panel stays"_s;
        if (m_chat->voiceChatBtn->isHidden() || !m_chat->stopORSendButton->isEnabled())
            return u"a button is missing"_s;
        return messages() == m_messagesBefore ? QString() : u"messages are lost"_s;
    }

protected:
    [[nodiscard]] bool isAtRest() const override { return m_phone.isQuiet(); }

private:
    void record()
    {
        m_chat->voiceChatAction();
        m_phone.say();
        when([this] { return !m_chat->messageToSend().isEmpty(); },
             [this] { m_chat->stopRecordingORsendMessageAction(); });
    }
    [[nodiscard]] int messages() const { return m_chat->chatTableView()->rowCount(); }

    Phone m_phone;
    std::shared_ptr<ChatVC> m_chat;
    int m_messagesBefore = 0;
};

/// The socket is opened, as each set-up by the host does, and the other person writes twice.
class SocketRow final : public FaultRow {
public:
    explicit SocketRow(Laboratory &laboratory)
        : m_listener(laboratory, 3, VLApiServer::demo)
        , m_writer(laboratory, 4, VLApiServer::demo)
    {
        name = u"socket"_s;
        host = VLApiServer(VLApiServer::demo).socketHost();
        takesTime = false; // It stands when the fault comes.
        isTimed = false;
    }

    void prepare() override
    {
        m_listener.setUp();
        m_writer.setUp();
        when([this] { return m_listener.isSignedIn() && m_writer.isSignedIn(); },
             [this] {
                 m_listener.chat.openPrivateThread(userId(4));
                 m_writer.chat.openPrivateThread(userId(3));
             });
        when([this] { return m_listener.chat.isThreadKnown() && m_writer.chat.isThreadKnown(); }, [] {});
    }
    void act() override
    {
        m_messagesBefore = messages();
        m_written = 0;
        m_clock.start();
        m_listener.setUp();
        when([this] { return m_clock.hasExpired(untilFirstMs); }, [this] { write(); });
        when([this] { return m_written == 1 && m_clock.hasExpired(untilSecondMs); }, [this] { write(); });
        when([this] { return cameThrough() || (m_written == 2 && m_clock.hasExpired(untilLostMs)); }, [] {});
    }
    [[nodiscard]] bool cameThrough() const override { return m_written == 2 && messages() == m_messagesBefore + 2; }
    [[nodiscard]] QString complaint() const override { return {}; } // Nothing shows that nothing comes.

protected:
    [[nodiscard]] bool isAtRest() const override { return m_listener.isQuiet(); }

private:
    [[nodiscard]] std::size_t messages() const { return m_listener.chat.aryMessages.size(); }
    void write()
    {
        m_writer.api.sendChatMessage(m_writer.chat.threadID, u"en-US## Hello."_s, {},
                                     [this](const VLApiResult<VLChatMessage> &answer) {
                                         m_clock.start();
                                         if (answer)
                                             ++m_written;
                                         else
                                             m_again = Platform::current()->clock->after(500ms, [this] { write(); });
                                     });
    }

    Phone m_listener;
    Phone m_writer;
    QElapsedTimer m_clock;
    std::unique_ptr<Timer> m_again;
    int m_written = 0;
    std::size_t m_messagesBefore = 0;
};

} // namespace

void addChatRows(FaultRows &rows, Laboratory &laboratory)
{
    rows.push_back(std::make_unique<OpeningRow>(laboratory, u"thread"_s, VLApiServer::rc, u"/api/chat/thread"_s));
    rows.push_back(
        std::make_unique<OpeningRow>(laboratory, u"messages"_s, VLApiServer::production, u"/api/chat/thread/*"_s));
    rows.push_back(std::make_unique<SendRow>(laboratory));
    rows.push_back(std::make_unique<SocketRow>(laboratory));
}

} // namespace faults
