#include "platform/audio/WavFile.h"
#include "tests/fuzz/FuzzTargets.h"
#include "tests/fuzz/Property.h"

#ifdef VYNLEX_HAS_VCARDS
#    include "platform/contacts/VCards.h"
#endif

using namespace Qt::StringLiterals;

namespace vynlex::fuzz {

void wav(const QByteArray &bytes)
{
    const auto sound = WavFile::parse(bytes, u"f"_s);
    if (!sound) {
        require(sound.error().startsWith("f "_L1) && sound.error().endsWith(u'.'), "a failure is a sentence");
        return;
    }
    const AudioFormat &format = sound->format;
    require(format.sampleRateHz >= 8000 && format.sampleRateHz <= 192000, "the rate is in range");
    require(format.channelCount == 1 || format.channelCount == 2, "one channel or two");
    require(!sound->data.isEmpty() && sound->data.size() % format.bytesPerFrame() == 0, "whole frames, one at least");

    const QByteArray composed = WavFile::compose(*sound);
    const auto again = WavFile::parse(composed, u"f"_s);
    require(again && again->format == format && again->data == sound->data, "a sound survives being written and read");
    require(!WavFile::parse(composed.chopped(1), u"f"_s), "a file that is cut short is refused");
}

#ifdef VYNLEX_HAS_VCARDS
void vcard(const QByteArray &bytes)
{
    const auto contacts = contactsInVCards(bytes);
    require(static_cast<qsizetype>(contacts.size()) <= bytes.toUpper().count("END:VCARD"), "each contact is a card");
    for (const AddressBookContact &contact : contacts)
        require(!contact.phoneNumbers.contains(QString()), "a number has characters");

    if (!bytes.contains("\r\r\n")) // a line end more, which the replacing would take away
        require(contactsInVCards(QByteArray(bytes).replace("\r\n", "\n")) == contacts, "line ends do not matter");

    const QByteArray known = "BEGIN:VCARD\r\nFN:Asha\r\nTEL:1\r\nEND:VCARD\r\n\r\n";
    auto expected = contacts;
    expected.insert(expected.begin(), {u"Asha"_s, {}, {u"1"_s}});
    if (!bytes.startsWith("\xef\xbb\xbf")) // which counts at the start of a file alone
        require(contactsInVCards(known + bytes) == expected, "a card does not hang on the card before it");
}
#else
void vcard(const QByteArray &) {} // This build has no reader of cards.
#endif

} // namespace vynlex::fuzz
