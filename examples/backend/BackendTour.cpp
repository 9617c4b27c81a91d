#include "BackendTour.h"

#include <QTextStream>

#include "AddressBook.h"
#include "Table.h"
#include "api/JwtUserId.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

const QString callsOfInterest = u"one_to_one_call,group_call"_s;
constexpr qint64 mostCalls = 200;

void print(const QString &text)
{
    QTextStream(stdout) << text << Qt::endl;
}

QString fullName(const std::optional<QString> &name, const std::optional<QString> &lastName)
{
    return (name.value_or(QString()) + u' ' + lastName.value_or(QString())).trimmed();
}

} // namespace

BackendTour::BackendTour(VLApiManager &api, const examples::SandboxProcess *sandbox, const Options &options, End end)
    : m_api(api)
    , m_options(options)
    , m_end(std::move(end))
    , m_listener(sandbox ? std::make_unique<Listener>(*sandbox) : nullptr)
{
}

template<typename Answer> VLApiCompletion<Answer> BackendTour::then(std::function<void(const Answer &)> show)
{
    return [this, show = std::move(show)](const VLApiResult<Answer> &answer) {
        if (answer)
            show(*answer);
        else
            m_end(answer.error().errorMessage().trimmed());
    };
}

void BackendTour::start()
{
    m_api.getJWToken(m_options.webToken, then<VLTokenResponse>([this](const VLTokenResponse &token) {
                         if (!token.jwt)
                             return m_end(u"The answer holds no token."_s);
                         m_api.setCredentials(userIdOfJwt(*token.jwt), *token.jwt);
                         print(u"Signed in as %1 until %2\n"_s.arg(m_api.currentUserGuestID,
                                                                   token.jwtExpiresOn.value_or(u"an unknown time"_s)));
                         uploadContacts();
                     }));
}

void BackendTour::uploadContacts()
{
    if (m_options.contactsFile.isEmpty())
        return showContacts();
    const auto entries = readAddressBook(m_options.contactsFile);
    if (!entries)
        return m_end(entries.error());
    m_api.uploadContacts(*entries, then<VLSuccessResponse>([this, count = entries->size()](const VLSuccessResponse &) {
        print(u"Uploaded %1 numbers of the address book\n"_s.arg(count));
        showContacts();
    }));
}

void BackendTour::showContacts()
{
    m_api.getContacts({}, then<VLContactsResponse>([this](const VLContactsResponse &page) {
                          const auto contacts = page.contacts.value_or(std::vector<Contact>());
                          Table table(u"Contacts"_s, {u"User id"_s, u"Name"_s, u"Phone"_s});
                          for (const Contact &contact : contacts)
                              table.addRow({contact.id.value_or(QString()), fullName(contact.name, contact.lname),
                                            contact.phoneNo.value_or(QString())});
                          print(table.text());
                          if (m_options.partner.isEmpty() && !contacts.empty())
                              m_options.partner = contacts.front().id.value_or(QString());
                          showRecentCalls();
                      }));
}

void BackendTour::showRecentCalls()
{
    m_api.getRecentContacts(
        callsOfInterest, 0, mostCalls, then<VLRecentContactsResponse>([this](const VLRecentContactsResponse &recent) {
            Table table(u"Recent calls"_s, {u"Begun"_s, u"Kind"_s, u"Title"_s, u"Owner"_s, u"Phone"_s, u"Missed"_s});
            for (const CallHistory &call : recent.callHistory)
                table.addRow({call.startMeeting.value_or(QString()), call.typeOfCall.value_or(QString()),
                              call.title.value_or(QString()), call.ownerName.value_or(QString()),
                              call.ownerPhoneNo.value_or(QString()),
                              call.isMissedCall.value_or(false) ? u"yes"_s : u""_s});
            print(table.text());
            if (m_options.partner.isEmpty())
                return m_end(std::nullopt); // nobody to talk with
            openConversation();
        }));
}

void BackendTour::openConversation()
{
    m_api.getPrivateChatThread(
        m_options.partner, m_api.currentUserGuestID, then<VLChatThread>([this](const VLChatThread &thread) {
            m_threadId = thread.id;
            Table table(u"Members of the conversation %1"_s.arg(thread.id), {u"User id"_s, u"Name"_s});
            for (const auto &member : thread.members.value_or(std::vector<VLChatParticipant>()))
                table.addRow({member.id, fullName(member.name, member.lname)});
            print(table.text());
            if (m_options.text.isEmpty())
                return showMessages();
            if (!m_listener)
                return send();
            m_listener->start(m_options.partner, [this](const std::optional<QString> &problem) {
                if (problem)
                    print(*problem + u'\n');
                m_isHeard = !problem;
                send();
            });
        }));
}

void BackendTour::send()
{
    m_api.sendChatMessage(m_threadId, m_options.text, {}, then<VLChatMessage>([this](const VLChatMessage &sent) {
                              m_sentId = sent.id;
                              showMessages();
                          }));
}

void BackendTour::showMessages()
{
    m_api.getChatMessages(m_threadId, then<VLThreadChatMessages>([this](const VLThreadChatMessages &page) {
                              Table table(u"Newest messages"_s, {u"Sent"_s, u"By"_s, u"Text"_s});
                              for (const auto &message : page.messages.value_or(std::vector<VLChatMessage>()))
                                  table.addRow({message.createdAtString,
                                                fullName(message.creatorsName, message.creatorsLName),
                                                message.messageText});
                              print(table.text());
                              if (m_isHeard)
                                  m_listener->report(m_sentId, m_end);
                              else
                                  m_end(std::nullopt);
                          }));
}
