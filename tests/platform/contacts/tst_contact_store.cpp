#include <QTemporaryDir>
#include <QtTest>

#include "ContactStoreContract.h"
#include "platform/contacts/DeviceContactStore.h"
#include "platform/contacts/VCards.h"
#include "tests/fakes/FakeContactStore.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"

using namespace vynlex;

namespace {

constexpr const char *fileVariable = "VYNLEX_CONTACTS_FILE";

void write(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size());
}

/// "Given|Family: number, number"
QString shown(const std::vector<AddressBookContact> &contacts)
{
    QStringList lines;
    for (const AddressBookContact &contact : contacts)
        lines.append(QStringLiteral("%1|%2: %3")
                         .arg(contact.givenName, contact.familyName, contact.phoneNumbers.join(QStringLiteral(", "))));
    return lines.join(u'\n');
}

} // namespace

/// Over the fake and over what ships with a vCard file behind it.
class TestContactStore : public QObject {
    Q_OBJECT

private slots:
    void initTestCase_data() { addFakeAndShipped(); }

    void everyContactIsVisited()
    {
        const std::vector<AddressBookContact> contacts{{"Asha", "Sharma", {"+91 98765-43210", "2"}}, {"", "Works", {}}};
        const auto all = contract::enumerated(*makeStore(contacts));
        QVERIFY(all.result);
        QCOMPARE(shown(all.contacts), shown(contacts));
        QVERIFY(contract::accessGrantedBy(makeStore(contacts)));

        const auto none = contract::enumerated(*makeStore({{}}));
        QVERIFY(none.result && none.contacts.empty());
        QVERIFY(contract::accessGrantedBy(makeStore({{}})));
    }

    void whatMustNotBeReadIsRefused()
    {
        const auto all = contract::enumerated(*makeStore({}));
        QVERIFY(contract::failureOf(all.result).endsWith('.') && all.contacts.empty());
        QVERIFY(!contract::accessGrantedBy(makeStore({})));
    }

private:
    /// Without contacts one that must not be read.
    std::unique_ptr<ContactStore> makeStore(const std::optional<std::vector<AddressBookContact>> &contacts)
    {
        auto store = makeFakeOrShipped<ContactStore, FakeContactStore, DeviceContactStore>();
        if (auto *const fake = dynamic_cast<FakeContactStore *>(store.get())) {
            contacts ? fake->setContacts(*contacts) : fake->refuseAccess();
            return store;
        }
        const QString path = m_folder.filePath("contacts.vcf");
        qputenv(fileVariable, path.toUtf8());
        QFile::remove(path);
        QString cards;
        for (const AddressBookContact &contact : contacts.value_or(std::vector<AddressBookContact>()))
            cards += QStringLiteral("BEGIN:VCARD\nN:%1;%2\nTEL:%3\nEND:VCARD\n")
                         .arg(contact.familyName, contact.givenName, contact.phoneNumbers.join("\nTEL:"));
        if (contacts)
            write(path, cards.toUtf8());
        return store;
    }

    const QTemporaryDir m_folder;
};

class TestVCards : public QObject {
    Q_OBJECT

private slots:
    void cardsAsProgramsWriteThem_data()
    {
        const auto card = [](const QByteArray &lines) {
            return "BEGIN:VCARD\r\n" + QByteArray(lines).replace("\n", "\r\n") + "END:VCARD\r\n";
        };
        addRows<QByteArray, QString>({
            {"numbers in order, groups",
             card("VERSION:3.0\nN:Sharma;Asha;;;\nitem2.TEL;type=CELL:2\nitem2.X-ABLabel:_$!<Home>!$_\n"
                  "TEL;TYPE=WORK,VOICE:1\ntel:\nTEL:\n"),
             "Asha|Sharma: 2, 1"},
            {"2.1: quoted-printable, a character cut by a soft break",
             card("VERSION:2.1\nN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=E0=A4=B6=E0=A4=B0=E0=A5=8D=E0=A4=\n=AE=E0="
                  "A4=BE;"
                  "=E0=A4=86=E0=A4=B6=E0=A4=BE\nTEL;CELL;PREF:1\n"),
             u"आशा|शर्मा: 1"_qs},
            {"2.1: soft breaks before blanks and in words",
             card("N;QUOTED-PRINTABLE:Lo=\n=20ng;A=3BB=\n C=3D=\n\nTEL:1\n"), "A;B C=|Lo ng: 1"},
            {"2.1: a character set, encoded and plain",
             card("N;ENCODING=QUOTED-PRINTABLE;CHARSET=ISO-8859-1:M=FCller;J=f6rg\n"
                  "TEL:1\n") +
                 card("N;CHARSET=ISO-8859-2:\xA9=koda;Ji\xF8\xED\nTEL:2\n") + card("N:M\xFCller;J\xF6rg\nTEL:3\n") +
                 card(QByteArray("N;CHARSET=UTF-8:") + "\xE0\xA4\xB6;A\n"),
             u"Jörg|Müller: 1\nJiří|Š=koda: 2\nJörg|Müller: 3\nA|श: "_qs},
            {"2.1: a card in a card", card("N:Boss;The\nAGENT:\nBEGIN:VCARD\nN:Agent;An\nTEL:9\nEND:VCARD\nTEL:1\n"),
             "The|Boss: 1"},
            {"2.1: a picture", card("N:B;A\nPHOTO;JPEG;ENCODING=BASE64:\n AAAA\n TEL:9=\n\nTEL:1\n"), "A|B: 1"},
            {"3.0: a character cut by a fold, a number cut by a tab", card("N:\xE0\xA4\n \xB6;A\nTEL:+91 98\n\t765\n"),
             u"A|श: +91 98765"_qs},
            {"3.0: escapes, also such as are none", card("N:A\\;B\\,C\\\\;D\\nE\\q\nTEL:\\+1\\\n"),
             "D\nE\\q|A;B,C\\: \\+1\\"},
            {"4.0: numbers as addresses",
             card("VERSION:4.0\nN:;Asha;;;\nTEL;VALUE=uri;PREF=1;TYPE=\"voice,home:x\":tel:+1-555-0100;ext=5\n"
                  "TEL;VALUE=uri:TEL:%2B91%209\nTEL;VALUE=text:1,,2;3\n"),
             "Asha|: +1-555-0100, +91 9, 1,,2;3"},
            {"a full name alone", card("N:;;;;\nFN:Asha Sharma\nTEL:1\n") + card("FN:Taxi\n"),
             "Asha Sharma|: 1\nTaxi|: "},
            {"a mark, bare line ends, small letters",
             "\xEF\xBB\xBF"
             "begin:vcard\nn:B;A\nTel:1\nend:vcard\n\n\nBEGIN:VCARD\rN:D;C\rTEL:2\rEND:VCARD",
             "A|B: 1\nC|D: 2"},
            {"cards that do not end, and what is between cards",
             "TEL:0\nBEGIN:VCARD\nN:Gone;Is\nTEL:1\n" + card("N:B;A\nno property\n:;\nTEL\nTEL;X:1\n") +
                 "END:VCARD\nN:x;y\n" + card("N;ENCODING=QUOTED-PRINTABLE:D;C=\n") + "BEGIN:VCARD\nN:Cut;Is\nTEL:+91 9",
             "A|B: 1\nC|D: "},
            {"a NUL, bytes that are nothing, a number without end",
             card("N:B;A\nTEL:1" + QByteArray(1, '\0') + "\nTEL;\"\xFF:\xFF\nTEL:" + QByteArray(9000, '1') + "\n"),
             "A|B: "},
        });
    }
    void cardsAsProgramsWriteThem()
    {
        const auto [text, contacts] = currentRow<QByteArray, QString>();
        QCOMPARE(shown(contactsInVCards(text)), contacts);
    }

    void aFileThatIsNoAddressBookIsSaid()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("contacts.vcf");
        write(path, "name,number\nAsha,1\n");
        qputenv(fileVariable, path.toUtf8());
        DeviceContactStore store;
        QCOMPARE(contract::failureOf(contract::enumerated(store).result),
                 QStringLiteral("The address book file %1 holds no vCard that is complete.").arg(path));
        qunsetenv(fileVariable);
    }
};

template struct vynlex::InSuite<TestContactStore>;
template struct vynlex::InSuite<TestVCards>;

int main(int argc, char **argv)
{
    // Neither the developer's address book nor their bus.
    qunsetenv(fileVariable);
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    QCoreApplication application(argc, argv);
    return runSuite(argc, argv);
}

#include "tst_contact_store.moc"
