#include "two/DeviceRun.h"

#include <QGuiApplication>

#include "WindowedRun.h"
#include "language/LanguageTranslation.h"
#include "two/ChatPlayer.h"
#include "two/ParentLink.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace host {
namespace {

/// Reads the request's fields, has `act` done with them, and writes down what came of it.
template<typename Request, typename Answer>
QByteArray answered(const QByteArray &line, const std::function<tl::expected<Answer, QString>(const Request &)> &act)
{
    const auto answer =
        decodeJson<Request>(line).map_error([](const RecordError &error) { return error.message(); }).and_then(act);
    return answer ? encodeJson(*answer) : encodeJson(Problem{answer.error()});
}

QByteArray perform(const Options &options, HomePlayer &home, ChatPlayer &player, const QByteArray &line)
{
    const QString what = QJsonDocument::fromJson(line).object()["do"_L1].toString();
    if (what == "open"_L1) {
        return answered<PlainRequest, PlainAnswer>(line, [&](const PlainRequest &) {
            home.openKit();
            return player.open(otherThan(*options.device), ChatPlayer::Past::Messages).map([] {
                return PlainAnswer();
            });
        });
    }
    if (what == "lookBack"_L1) {
        return answered<PlainRequest, PlainAnswer>(line, [&](const PlainRequest &) {
            player.lookBack();
            return PlainAnswer();
        });
    }
    if (what == "say"_L1)
        return answered<SayRequest, SaidAnswer>(line, [&](const SayRequest &request) { return player.say(request); });
    if (what == "hear"_L1)
        return answered<HearRequest, HeardAnswer>(line,
                                                  [&](const HearRequest &request) { return player.hear(request); });
    return encodeJson(Problem{u"it cannot \"%1\"."_s.arg(what)});
}

} // namespace

int runDevice(const Options &options, Stage &stage, Room &room, const Device &device)
{
    for (const auto &[side, language] :
         {std::pair{Side::Speaker, options.speaker}, std::pair{Side::Listener, options.listener}}) {
        if (language)
            LanguageTranslation::shared().store(side, *language);
    }
    Props props(stage, room, device, options.outputFolder, u"recordings-"_s + options.device->word);
    HomePlayer home(props);
    ChatPlayer player(*options.device, props);
    const ParentLink link([&](const QByteArray &line) { return perform(options, home, player, line); });
    if (options.headless)
        return QGuiApplication::exec();
    const int fromLeft = options.device->word == people().front().word ? 0 : 1;
    return runWindowed(stage, room, {u"%1's phone"_s.arg(options.device->user.name), fromLeft},
                       !device.hasMicrophone());
}

} // namespace host
