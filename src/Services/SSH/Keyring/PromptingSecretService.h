#pragma once

#include <glib-object.h>

/// The type of a SecretService (libsecret) that carries out its prompts itself; for secret_service_open.
///
/// libsecret's own prompts never end if the service leaves the bus between the question and its acknowledgement, and
/// crash on a refusal whose result has another type. Here each prompt ends, with the result or with an error:
/// G_IO_ERROR_FAILED_HANDLED if the user refused or could not be asked; another one if the prompt was cancelled (then
/// it is taken back from the screen), the service left the bus, or it broke the protocol.
GType promptingSecretServiceType();
