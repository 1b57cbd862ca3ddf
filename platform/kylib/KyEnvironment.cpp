#include <kylib/KyEnvironment.h>

#include <QString>

#include <cstdlib>

bool KyEnvironment::exists(const QString& name, const bool&) {
    return std::getenv(name.toLocal8Bit().constData()) != nullptr;
}

bool KyEnvironment::getBool(const QString& name, const bool&, const bool&) {
    const char* const text = std::getenv(name.toLocal8Bit().constData());
    if (text == nullptr) return false;
    const QString value = QString::fromLocal8Bit(text).trimmed().toLower();
    bool isNumber = false;
    const long long number = value.toLongLong(&isNumber);
    if (isNumber) return number != 0;
    return value == QLatin1String("true") || value == QLatin1String("yes") ||
           value == QLatin1String("on");
}
