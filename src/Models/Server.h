#pragma once

#include "Models/RawText.h"
#include "Models/SystemInfo.h"

#include <QDateTime>
#include <QMap>
#include <QString>
#include <QUuid>
#include <optional>

/// How ssh authenticates.
enum class AuthMethod { Password, PublicKey, SshAgent };

/// The container command line of a server.
enum class ContainerRuntime { Docker, Podman };

enum class PackageManager { Apt, Dnf, Unknown };

template<>
struct RawTexts<AuthMethod> {
    static constexpr std::array all{std::pair{AuthMethod::Password, QStringView(u"password")},
                                    std::pair{AuthMethod::PublicKey, QStringView(u"publicKey")},
                                    std::pair{AuthMethod::SshAgent, QStringView(u"sshAgent")}};
};

template<>
struct RawTexts<ContainerRuntime> {
    static constexpr std::array all{std::pair{ContainerRuntime::Docker, QStringView(u"docker")},
                                    std::pair{ContainerRuntime::Podman, QStringView(u"podman")}};
};

template<>
struct RawTexts<PackageManager> {
    static constexpr std::array all{std::pair{PackageManager::Apt, QStringView(u"apt")},
                                    std::pair{PackageManager::Dnf, QStringView(u"dnf")},
                                    std::pair{PackageManager::Unknown, QStringView(u"unknown")}};
};

/// One managed server, as the operator entered it, with what was last learnt from it.
/// No secret is ever part of it: passwords and pass phrases are the secret store's.
struct Server {
    QUuid id = QUuid::createUuid(); ///< the identity; never changed after creation
    QString name;
    QString host;
    int port = 22;
    QString username;
    AuthMethod authMethod = AuthMethod::Password;
    std::optional<QString> privateKeyPath;  ///< for AuthMethod::PublicKey
    bool isConnected = false;               ///< the session manager's last verdict
    std::optional<QDateTime> lastConnected; ///< UTC
    std::optional<SystemInfo> systemInfo;
    QMap<QString, QString> labels;
    PackageManager packageManager = PackageManager::Unknown;
    bool useSudo = false;
    ContainerRuntime containerRuntime = ContainerRuntime::Docker;
    bool forwardAgent = false;

    bool operator==(const Server &) const = default;
};

size_t qHash(const Server &record, size_t seed = 0);
