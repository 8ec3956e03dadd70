#pragma once

#include <QString>

/// Why a container operation failed.
struct DockerError {
    enum class Kind {
        PermissionDenied,
        ConnectionFailed,
        Unknown,
        DockerNotInstalled,
        DockerServiceNotRunning,
        InvalidJsonFormat
    };

    Kind kind = Kind::Unknown;
    QString text; ///< what the server said; only the first three kinds have it

    static DockerError permissionDenied(const QString &text) { return {Kind::PermissionDenied, text}; }

    static DockerError connectionFailed(const QString &text) { return {Kind::ConnectionFailed, text}; }

    static DockerError unknown(const QString &text) { return {Kind::Unknown, text}; }

    static DockerError dockerNotInstalled() { return {Kind::DockerNotInstalled, {}}; }

    static DockerError dockerServiceNotRunning() { return {Kind::DockerServiceNotRunning, {}}; }

    static DockerError invalidJsonFormat() { return {Kind::InvalidJsonFormat, {}}; }

    /// The sentence for the operator.
    QString displayMessage() const;

    bool operator==(const DockerError &) const = default;
};
