#pragma once

#include "Models/Json.h"
#include "Models/Json/Hash.h"
#include "Models/Json/Reader.h"
#include "Models/Json/Writer.h"

template<class Record>
QByteArray toJson(const Record &record)
{
    Json::Writer writer;
    Json::write(writer, record);
    return writer.take();
}

template<class Record>
std::optional<Record> fromJson(QByteArrayView json, QString *failure)
{
    std::optional<Record> record(std::in_place);
    if (!Json::read(json, Json::kReader<Record>, &*record, failure)) {
        record.reset();
    }
    return record;
}

/// Compiles the JSON functions of a type in this file.
#define JSON_INSTANTIATE(...)                                                                                        \
    template QByteArray toJson(const __VA_ARGS__ &);                                                                 \
    template std::optional<__VA_ARGS__> fromJson<__VA_ARGS__>(QByteArrayView, QString *);

/// Compiles the JSON functions and the hash of a record in this file, which holds its table of fields.
#define JSON_RECORD(Record)                                                                                          \
    JSON_INSTANTIATE(Record)                                                                                         \
    size_t qHash(const Record &record, size_t seed)                                                                  \
    {                                                                                                                \
        return Json::hashFields(record, seed);                                                                       \
    }
