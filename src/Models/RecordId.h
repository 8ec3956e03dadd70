#pragma once

#include <QUuid>

/// Identities of records that live as long as a list does.
namespace RecordId
{

/// A random UUID from a generator that is seeded once. QUuid::createUuid() asks the processor for every bit, which
/// for a list of 20,000 records takes longer than all else.
QUuid fresh();

} // namespace RecordId
