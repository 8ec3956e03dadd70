#pragma once

#include <string_view>
#include <tuple>

// What a record looks like in JSON: one table a record, from which reading, writing and hashing follow.
namespace Json
{

/// One key of an object and the member that holds its value.
template<class Record, class Member>
struct Field {
    std::string_view key;
    std::string_view quotedKey; ///< the key as it is written: quoted, and with its colon
    Member Record::*member;
    bool hasStoredDefault; ///< the key may be missing and leaves the member as it was constructed
};

/// Specialised for each record with `static constexpr auto list = std::tuple{Field...}`, in the order of writing.
/// A static function `finish(Record &)`, where there is one, is called on each record that was read.
template<class Record>
struct Fields;

template<class T>
concept IsRecord = requires { Fields<T>::list; };

template<class Record, class Member>
consteval Field<Record, Member> makeField(std::string_view quotedKey, Member Record::*member, bool hasStoredDefault)
{
    return {quotedKey.substr(1, quotedKey.size() - 3), quotedKey, member, hasStoredDefault};
}

} // namespace Json

/// A field whose key is the member's name, one with a key of its own, and one that older files may lack.
#define JSON_FIELD(Record, member) Json::makeField("\"" #member "\":", &Record::member, false)
#define JSON_FIELD_AS(Record, key, member) Json::makeField("\"" key "\":", &Record::member, false)
#define JSON_FIELD_WITH_DEFAULT(Record, member) Json::makeField("\"" #member "\":", &Record::member, true)
