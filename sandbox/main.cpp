#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "sandbox/Options.h"
#include "sandbox/backend/BackendRoutes.h"
#include "sandbox/recognition/RecogniserModels.h"
#include "sandbox/server/Server.h"
#include "sandbox/speech/SpeechRoutes.h"
#include "sandbox/translation/TranslationRoutes.h"

namespace {

/// Room for the largest address book that the backend takes, 10,000 entries with long names in any script. What is
/// larger yet, the server refuses before the backend can say so in its own form.
constexpr std::size_t largestBody = std::size_t{4} * 1024 * 1024;

/// Keys that the user chose stay unsaid; those that everybody knows help a host to its configuration.
std::string readyLine(const sandbox::Server::Listening &listening, const sandbox::Options &options)
{
    boost::json::object keys;
    if (options.speech.acceptsKey(sandbox::defaultSpeechKey))
        keys["speech"] = sandbox::defaultSpeechKey;
    if (options.translator.acceptsKey(sandbox::defaultTranslatorKey))
        keys["translator"] = sandbox::defaultTranslatorKey;
    const boost::json::object line{
        {"tls", listening.tlsPort},         {"proxy", listening.proxyPort},
        {"control", listening.controlPort}, {"ca", listening.authorityFile.string()},
        {"keys", std::move(keys)},          {"pid", getpid()},
    };
    return boost::json::serialize(line);
}

int serve(const sandbox::Options &options)
{
    sandbox::RecogniserModels::Files files;
    if (options.phrasebook)
        files.phrasebook = *options.phrasebook;
    const auto models = sandbox::RecogniserModels::load(files);
    sandbox::BackendApi backend(options.backend);
    sandbox::ServerOptions serverOptions = options.server;
    serverOptions.limits.bodyBytes = largestBody;
    sandbox::Server server(std::move(serverOptions));
    sandbox::addBackendRoutes(server.context(), backend, options.socket);
    sandbox::addTranslationRoutes(server.context().router, models->book(), options.translator);
    sandbox::addSpeechRoutes(std::make_shared<sandbox::SpeechService>(
        sandbox::SpeechService{server.context(), options.speech, sandbox::makeSpeechEngines(models)}));

    const auto listening = server.listen();
    server.stopOnSignals();
    if (options.stopWithStandardInput)
        server.stopWithStandardInput();
    std::cout << readyLine(listening, options) << std::endl;
    server.run();
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char **argv)
{
    std::signal(SIGPIPE, SIG_IGN); // a reader of the output that goes away does not end the server
    try {
        const auto options = sandbox::Options::parse({argv + 1, argv + argc});
        if (options.help) {
            std::cout << sandbox::usage();
            return EXIT_SUCCESS;
        }
        if (options.version) {
            std::cout << "confera-sandbox " SANDBOX_VERSION "\n";
            return EXIT_SUCCESS;
        }
        return serve(options);
    } catch (const std::invalid_argument &error) {
        std::cerr << "confera-sandbox: " << error.what() << " (--help lists the options)\n";
        return 2;
    } catch (const std::exception &error) {
        std::cerr << "confera-sandbox: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
