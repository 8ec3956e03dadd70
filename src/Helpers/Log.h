#pragma once

#include <QSet>
#include <QString>
#include <exception>
#include <source_location>
#include <system_error>

/// Diagnostics of debug builds, written to standard error as one line a message: time, level, category, text.
/// In a release build every function here is empty: no message reaches any sink.
///
/// Secrets never come here. Whoever logs an argument vector logs it as it is, since no secret is ever put into one.
namespace Log
{

enum class Level { Verbose = 0, Debug = 1, Info = 2, Warning = 3, Error = 4 };

enum class Category {
    General,
    Ssh,
    Terminal,
    FileOperations,
    Network,
    Ui,
    Auth,
    Docker,
    Services,
    Processes,
    Packages,
    Connection,
    Performance
};

/// What is written. An empty set of categories allows all of them.
struct Settings {
    Level minimumLevel = Level::Debug;
    QSet<Category> allowedCategories;
    bool includeSourceLocation = false;
    bool includeTimestamp = true;
};

/// The settings of this process; change them before the first message.
Settings &settings();

/// The name under which a category is printed, for instance "SSH".
QString categoryName(Category category);

/// All categories, in the order of their declaration.
QList<Category> allCategories();

#ifdef NDEBUG
inline constexpr bool kEnabled = false;
#else
inline constexpr bool kEnabled = true;
#endif

/// The line that a message becomes, without its line end; control characters are shown as escapes.
QString format(Level level, Category category, const QString &message, const std::source_location &where);

/// The texts of error() for an error value and of performance().
QString withDescription(const QString &message, const QString &description);
QString tookText(const QString &label, double seconds);

void write(Level level, Category category, const QString &message, const std::source_location &where);

inline void log(Level level, const QString &message, Category category, const std::source_location &where)
{
    if constexpr (kEnabled) {
        write(level, category, message, where);
    }
}

inline void verbose(const QString &message, Category category = Category::General,
                    const std::source_location &where = std::source_location::current())
{
    log(Level::Verbose, message, category, where);
}

inline void debug(const QString &message, Category category = Category::General,
                  const std::source_location &where = std::source_location::current())
{
    log(Level::Debug, message, category, where);
}

inline void info(const QString &message, Category category = Category::General,
                 const std::source_location &where = std::source_location::current())
{
    log(Level::Info, message, category, where);
}

inline void warning(const QString &message, Category category = Category::General,
                    const std::source_location &where = std::source_location::current())
{
    log(Level::Warning, message, category, where);
}

inline void error(const QString &message, Category category = Category::General,
                  const std::source_location &where = std::source_location::current())
{
    log(Level::Error, message, category, where);
}

/// An error value as "message: description", or its description alone.
inline void error(const std::exception &error, const QString &message = {}, Category category = Category::General,
                  const std::source_location &where = std::source_location::current())
{
    if constexpr (kEnabled) {
        write(Level::Error, category, withDescription(message, QString::fromUtf8(error.what())), where);
    }
}

inline void error(const std::error_code &error, const QString &message = {}, Category category = Category::General,
                  const std::source_location &where = std::source_location::current())
{
    if constexpr (kEnabled) {
        write(Level::Error, category, withDescription(message, QString::fromStdString(error.message())), where);
    }
}

/// The name of the calling function, as it is entered and left.
inline void functionEntry(const std::source_location &where = std::source_location::current())
{
    if constexpr (kEnabled) {
        write(Level::Verbose, Category::General, QLatin1StringView("-> ") + QString::fromUtf8(where.function_name()),
              where);
    }
}

inline void functionExit(const std::source_location &where = std::source_location::current())
{
    if constexpr (kEnabled) {
        write(Level::Verbose, Category::General, QLatin1StringView("<- ") + QString::fromUtf8(where.function_name()),
              where);
    }
}

/// "label - took 0.123s", in the category Performance. `seconds` is wall time.
inline void performance(const QString &label, double seconds,
                        const std::source_location &where = std::source_location::current())
{
    if constexpr (kEnabled) {
        write(Level::Debug, Category::Performance, tookText(label, seconds), where);
    }
}

} // namespace Log
