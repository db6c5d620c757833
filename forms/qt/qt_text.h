#pragma once

#include <QString>
#include <string>

namespace opane::qt {

inline QString toQt(const std::string& text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::string fromQt(const QString& text) {
    return text.toStdString();
}

/// With line feeds alone, which is what Qt breaks lines at.
inline QString linesToQt(const std::string& text) {
    return toQt(text).remove(u'\r');
}

/// A caption as it is: Qt takes an ampersand for the mark of a mnemonic.
inline QString captionToQt(const std::string& caption) {
    return toQt(caption).replace(QStringLiteral("&"), QStringLiteral("&&"));
}

}  // namespace opane::qt
