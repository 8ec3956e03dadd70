#include "Views/Shell/LabelTone.h"

#include <QHash>
#include <array>

using namespace Qt::StringLiterals;

// Green and red stay what they mean, and the accent is the ground of a selected row.
ToneName labelTone(const QString &label)
{
    static constexpr std::array kTones{ToneName::Purple, ToneName::Blue, ToneName::Orange, ToneName::Gray};
    static const QHash<QString, ToneName> kKnown{{u"env"_s, ToneName::Purple},  {u"environment"_s, ToneName::Purple},
                                                 {u"role"_s, ToneName::Blue},   {u"team"_s, ToneName::Orange},
                                                 {u"region"_s, ToneName::Gray}, {u"location"_s, ToneName::Gray}};
    const QString key = label.section(u':', 0, 0).toLower();
    if (const auto known = kKnown.constFind(key); known != kKnown.cend()) {
        return *known;
    }
    quint32 hash = 2166136261U; // FNV-1a
    for (const QChar c : key) {
        hash = (hash ^ c.unicode()) * 16777619U;
    }
    return kTones.at(hash % kTones.size());
}
