#include "sandbox/speech/Ssml.h"

#include <pugixml.hpp>

#include "sandbox/speech/SpeechMessage.h"

namespace sandbox {
namespace {

/// All character data below `node`, in the order of the document.
void appendText(const pugi::xml_node &node, std::string &text)
{
    for (const pugi::xml_node &child : node.children()) {
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
            text += child.value();
        else
            appendText(child, text);
    }
}

} // namespace

std::vector<SpokenText> parseSsml(const std::string &ssml)
{
    pugi::xml_document document;
    const auto result = document.load_buffer(ssml.data(), ssml.size(), pugi::parse_default | pugi::parse_ws_pcdata,
                                             pugi::encoding_utf8);
    if (!result)
        throw ProtocolError(ProtocolError::invalidData,
                            std::string("The SSML cannot be parsed: ") + result.description());
    const pugi::xml_node speak = document.child("speak");
    if (!speak)
        throw ProtocolError(ProtocolError::invalidData, "The SSML has no speak element.");
    std::vector<SpokenText> spoken;
    for (const pugi::xml_node &voice : speak.children("voice")) {
        SpokenText part{voice.attribute("name").value(), {}};
        appendText(voice, part.text);
        spoken.push_back(std::move(part));
    }
    if (spoken.empty())
        throw ProtocolError(ProtocolError::invalidData, "The SSML has no voice element.");
    return spoken;
}

} // namespace sandbox
