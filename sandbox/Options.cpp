#include "sandbox/Options.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <stdexcept>
#include <utility>

namespace sandbox {

namespace {

std::filesystem::path defaultDataFolder()
{
    const auto variable = [](const char *name) {
        const char *value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): before any thread
        return std::filesystem::path(value ? value : "");
    };
    const std::filesystem::path base = variable("XDG_DATA_HOME"); // to be ignored when relative
    if (base.is_absolute())
        return base / "confera-sandbox";
    const std::filesystem::path home = variable("HOME");
    if (!home.is_absolute())
        throw std::invalid_argument("neither XDG_DATA_HOME nor HOME is set: name a folder with --data");
    return home / ".local" / "share" / "confera-sandbox";
}

std::uint16_t port(const std::string &name, const std::string &value)
{
    std::uint16_t number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (error != std::errc{} || end != value.data() + value.size())
        throw std::invalid_argument(name + ": '" + value + "' is not a port (0 to 65535)");
    return number;
}

std::chrono::seconds seconds(const std::string &name, const std::string &value)
{
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (error != std::errc{} || end != value.data() + value.size() || number == 0)
        throw std::invalid_argument(name + ": '" + value + "' is not a number of seconds");
    return std::chrono::seconds(number);
}

} // namespace

Options Options::parse(const std::vector<std::string> &arguments)
{
    Options options;
    using Take = std::function<void(const std::string &name, const std::string &value)>;
    const auto addTo = [](std::vector<std::string> &list) -> Take {
        return [&list](const std::string &, const std::string &value) { list.push_back(value); };
    };
    const auto portInto = [](std::uint16_t &target) -> Take {
        return [&target](const std::string &name, const std::string &value) { target = port(name, value); };
    };
    const std::map<std::string, Take, std::less<>> withValue{
        {"--data", [&](const std::string &, const std::string &value) { options.server.dataFolder = value; }},
        {"--port", portInto(options.server.tlsPort)},
        {"--proxy-port", portInto(options.server.proxyPort)},
        {"--control-port", portInto(options.server.controlPort)},
        {"--speech-key", addTo(options.speech.keys)},
        {"--speech-region", addTo(options.speech.regions)},
        {"--translator-key", addTo(options.translator.keys)},
        {"--translator-region", addTo(options.translator.regions)},
        {"--seed", [&](const std::string &, const std::string &value) { options.backend.seed = value; }},
        {"--token-lifetime", [&](const std::string &name,
                                 const std::string &value) { options.backend.tokenLifetime = seconds(name, value); }},
        {"--socket-silence",
         [&](const std::string &name, const std::string &value) { options.socket.silence = seconds(name, value); }},
        {"--phrasebook", [&](const std::string &, const std::string &value) { options.phrasebook = value; }},
    };
    const std::map<std::string, bool *, std::less<>> switches{
        {"--stop-with-parent", &options.stopWithStandardInput},
        {"--help", &options.help},
        {"-h", &options.help},
        {"--version", &options.version},
    };

    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string &argument = arguments[i];
        if (const auto found = switches.find(argument); found != switches.end()) {
            *found->second = true;
            continue;
        }
        const auto equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        const auto found = withValue.find(name);
        if (found == withValue.end())
            throw std::invalid_argument("unknown option '" + name + "'");
        if (equals == std::string::npos && i + 1 == arguments.size())
            throw std::invalid_argument(name + " needs a value");
        const std::string value = equals == std::string::npos ? arguments[++i] : argument.substr(equals + 1);
        if (value.empty())
            throw std::invalid_argument(name + " needs a value");
        found->second(name, value);
    }

    if (options.speech.keys.empty())
        options.speech.keys.emplace_back(defaultSpeechKey);
    if (options.translator.keys.empty())
        options.translator.keys.emplace_back(defaultTranslatorKey);
    if (options.server.dataFolder.empty() && !options.help && !options.version)
        options.server.dataFolder = defaultDataFolder();
    options.backend.dataFolder = options.server.dataFolder;
    return options;
}

std::string_view usage()
{
    return R"(Usage: confera-sandbox [OPTION]...
Stands in, on this machine only, for the cloud services that the translation kit talks to.

  --data DIR                folder for the certificate authority and all data
                            (default: $XDG_DATA_HOME/confera-sandbox)
  --port N                  TLS port for every host name (default: 0, the system chooses)
  --proxy-port N            HTTP proxy port, CONNECT only (default: 0)
  --control-port N          plain HTTP port for faults and counts (default: 0)
  --speech-key KEY          a key that the speech service accepts; repeatable
                            (default: sandbox-speech-key)
  --speech-region NAME      a region that exists; repeatable (default: any)
  --translator-key KEY      a key that the translator accepts; repeatable
                            (default: sandbox-translator-key)
  --translator-region NAME  a region that the translator key is good for; repeatable (default: any)
  --phrasebook FILE         the sentences that are understood, tab-separated
  --seed FILE               users, calls and conversations of a new data folder, JSON; the web token
                            of each user is "web-token-" and the user's id
  --token-lifetime SECONDS  how long the backend's JWTs are good (default: 86400)
  --socket-silence SECONDS  how long a client of the backend's socket may say nothing (default: 60)
  --stop-with-parent        stop when standard input reaches its end
  --help                    show this and stop
  --version                 show the version and stop

When it is ready it writes one line of JSON to standard output: its ports, the authority's certificate
to trust, and its process id. It stops on SIGTERM and SIGINT.
)";
}

} // namespace sandbox
