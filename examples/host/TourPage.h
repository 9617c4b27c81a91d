#pragma once

#include <QString>
#include <QStringList>

#include <vector>

#include "Sound.h"

namespace host {

/// Something that was heard in the tour.
struct TourSound {
    QString caption;
    QString file; ///< WAV, in the folder of the page.
    SoundFacts facts;
};

/// One step of the tour, as its page tells it.
struct TourMoment {
    QString chapter;
    QString title;
    QString told;                  ///< A sentence on what is to be seen.
    std::vector<QString> pictures; ///< PNG files in the folder of the page.
    std::vector<TourSound> sounds;
    std::vector<std::pair<QString, QString>> words; ///< What was said, recognised and so on.
    QStringList console;                            ///< What the kit wrote meanwhile.
    QString problem;                                ///< Empty: it came through.
};

/// Writes the tour as one page, index.html, that needs nothing but the files beside it. False when it cannot be
/// written. `subtitle` says on what device and in which languages.
[[nodiscard]] bool writeTourPage(const QString &folder, const QString &subtitle,
                                 const std::vector<TourMoment> &moments);

} // namespace host
