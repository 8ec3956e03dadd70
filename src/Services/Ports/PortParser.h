#pragma once

#include "Models/PortInfo.h"

#include <QByteArrayView>
#include <QList>

/// Reads what GetPortsCommand prints.
struct PortParser {
    struct Address {
        QString ip;
        QString port; ///< empty where the text has no colon

        bool operator==(const Address &) const = default;
    };

    /// More sockets than this are not read: no server has them, and an output of many megabytes shall not become
    /// records of many gigabytes.
    static constexpr qsizetype kMostPorts = 200'000;

    /// The sockets in the order of the output, of ss(8) or else of netstat(8); lines that are none are passed over.
    /// netstat leaves the state of an UDP socket out, so that there its process stands in `state`.
    static QList<PortInfo> parsePorts(QByteArrayView from, bool isSSCommand);

    /// Takes "0.0.0.0:22", "[::]:22", ":::22", "*:68", each also with a zone ("%eth0").
    static Address parseSSAddress(QByteArrayView address);
};
