// Texts between the record (UTF-8, CRLF line ends) and the widgets.
#pragma once

#include <QString>
#include <QUtf8StringView>
#include <string>
#include <string_view>

namespace varnoth::ui {

// UTF-8, or Latin-1 where the bytes are no valid UTF-8 (a file's own bytes).
inline QString to_qstring(std::string_view s) {
  const auto size = static_cast<qsizetype>(s.size());
  if (QUtf8StringView(s.data(), size).isValidUtf8()) return QString::fromUtf8(s.data(), size);
  return QString::fromLatin1(s.data(), size);
}

inline std::string to_std(const QString& s) { return s.toStdString(); }

// A record text as a widget shows it: CRLF and lone CR become line feeds.
inline QString display_text(std::string_view s) {
  QString q = to_qstring(s);
  q.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  q.replace(QLatin1Char('\r'), QLatin1Char('\n'));
  return q;
}

}  // namespace varnoth::ui
