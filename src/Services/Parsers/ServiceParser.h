#pragma once

#include "Models/ServiceInfo.h"

#include <QByteArrayView>
#include <QList>

/// Reads what ServiceListCommand prints: `systemctl list-units --plain --no-legend`, one line a unit.
struct ServiceParser {
    /// The units in the order of the output; lines that are no unit are passed over. `enabled` tells that the unit is
    /// loaded, nothing of its start at boot. A unit that is active otherwise than running or exited counts as
    /// inactive.
    static QList<ServiceInfo> parse(QByteArrayView output);
};
