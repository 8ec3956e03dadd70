#pragma once

#include "Models/ServerStore.h"

#include <QPointer>

/// What belongs to the window and is reached from outside of it. A reference is empty while there is no window, and
/// what would use it does nothing then.
struct AppState {
    QPointer<ServerStore> serverStore;
};
