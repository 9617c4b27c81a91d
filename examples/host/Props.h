#pragma once

#include <QString>

#include "Album.h"
#include "Device.h"
#include "Hand.h"
#include "Room.h"
#include "Stage.h"
#include "VoiceActor.h"

namespace host {

/// What everybody needs who plays on the stage. Main thread.
struct Props {
    /// Pictures and sound go into `folder`, recordings of what is said into its subfolder `recordings`, which exists.
    Props(Stage &theStage, Room &theRoom, const Device &theDevice, const QString &folder, const QString &recordings)
        : stage(theStage)
        , room(theRoom)
        , device(theDevice)
        , hand(theStage)
        , album(theStage, folder)
        , actor(theRoom, album.path(recordings), theStage.user().config)
    {
    }

    Stage &stage;
    Room &room;
    const Device &device;
    Hand hand;
    Album album;
    VoiceActor actor;
};

} // namespace host
