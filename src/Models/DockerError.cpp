#include "Models/DockerError.h"

using namespace Qt::StringLiterals;

QString DockerError::displayMessage() const
{
    switch (kind) {
    case Kind::PermissionDenied:
        return u"Permission denied. "_s + text;
    case Kind::ConnectionFailed:
        return u"Failed to connect to Docker: "_s + text;
    case Kind::Unknown:
        return text;
    case Kind::DockerNotInstalled:
        return u"Docker is not installed on this server"_s;
    case Kind::DockerServiceNotRunning:
        return u"Docker service is not running"_s;
    case Kind::InvalidJsonFormat:
        return u"Docker returned invalid data format"_s;
    }
    return text;
}
