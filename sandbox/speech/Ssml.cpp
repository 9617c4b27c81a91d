#include "sandbox/speech/Ssml.h"

#include <expat.h>

#include <memory>
#include <optional>
#include <type_traits>

#include "sandbox/speech/SpeechMessage.h"

namespace sandbox {
namespace {

constexpr std::size_t deepest = 64;

class Reader {
public:
    std::vector<SpokenText> read(std::string_view ssml)
    {
        const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
            XML_ParserCreate("UTF-8"), &XML_ParserFree);
        m_parser = parser.get();
        XML_SetUserData(m_parser, this);
        XML_SetElementHandler(
            m_parser,
            [](void *self, const XML_Char *name, const XML_Char **attributes) {
                static_cast<Reader *>(self)->begin(name, attributes);
            },
            [](void *self, const XML_Char *name) { static_cast<Reader *>(self)->end(name); });
        XML_SetCharacterDataHandler(m_parser, [](void *self, const XML_Char *text, int size) {
            static_cast<Reader *>(self)->characters({text, static_cast<std::size_t>(size)});
        });
        XML_SetStartDoctypeDeclHandler(m_parser,
                                       [](void *self, const XML_Char *, const XML_Char *, const XML_Char *, int) {
                                           static_cast<Reader *>(self)->refuse("a document type is not allowed");
                                       });

        const auto status = XML_Parse(m_parser, ssml.data(), static_cast<int>(ssml.size()), XML_TRUE);
        if (m_refusal)
            fail(*m_refusal);
        if (status != XML_STATUS_OK)
            fail(std::string(XML_ErrorString(XML_GetErrorCode(m_parser))) + " in line " +
                 std::to_string(XML_GetCurrentLineNumber(m_parser)));
        if (m_spoken.empty())
            fail("there is no voice element");
        return std::move(m_spoken);
    }

private:
    [[noreturn]] static void fail(const std::string &reason)
    {
        throw ProtocolError(ProtocolError::invalidData, "Invalid SSML: " + reason + ".");
    }

    /// No exception may pass through the parser, which is C.
    void refuse(std::string reason)
    {
        if (!m_refusal)
            m_refusal = std::move(reason);
        XML_StopParser(m_parser, XML_FALSE);
    }

    static std::optional<std::string> attribute(const XML_Char **attributes, std::string_view name)
    {
        for (; *attributes; attributes += 2) {
            if (attributes[0] == name)
                return attributes[1];
        }
        return std::nullopt;
    }

    void begin(std::string_view name, const XML_Char **attributes)
    {
        if (m_depth == 0 && name != "speak")
            return refuse("the root element is not speak");
        if (++m_depth > deepest)
            return refuse("the elements are nested too deeply");
        if (name == "voice") {
            auto voice = attribute(attributes, "name");
            if (!voice || voice->empty())
                return refuse("a voice has no name");
            m_voices.push_back(*voice);
            m_spoken.push_back({*voice, {}});
        } else if (name == "break" || name == "p" || name == "s") {
            append("\n");
        } else if (name == "sub") {
            if (m_subDepth == 0)
                append(attribute(attributes, "alias").value_or(""));
            ++m_subDepth;
        }
    }

    void end(std::string_view name)
    {
        --m_depth;
        if (name == "voice") {
            m_voices.pop_back();
            if (!m_voices.empty())
                m_spoken.push_back({m_voices.back(), {}}); // the rest of the outer voice
        } else if (name == "p" || name == "s") {
            append("\n");
        } else if (name == "sub") {
            --m_subDepth;
        }
    }

    void characters(std::string_view text)
    {
        if (m_subDepth == 0)
            append(text);
    }

    void append(std::string_view text)
    {
        if (!m_voices.empty())
            m_spoken.back().text += text;
        else if (text.find_first_not_of(" \t\r\n") != std::string_view::npos)
            refuse("there is text outside of a voice element");
    }

    XML_Parser m_parser = nullptr;
    std::size_t m_depth = 0;
    std::size_t m_subDepth = 0;
    std::vector<std::string> m_voices; ///< those that are open
    std::vector<SpokenText> m_spoken;
    std::optional<std::string> m_refusal;
};

} // namespace

std::vector<SpokenText> parseSsml(std::string_view ssml)
{
    return Reader().read(ssml);
}

} // namespace sandbox
