// SPDX-License-Identifier: GPL-3.0-or-later
#include "scriptlexer.h"

namespace hdeapp {

bool splitScriptLine(const QString &line, QStringList *words, QString *error)
{
    words->clear();
    const QString trimmed = line.trimmed();
    if (trimmed.isEmpty() || trimmed.startsWith(QLatin1Char('#')))
        return true;
    QString word;
    bool inWord = false;
    enum { kPlain, kSingle, kDouble } quote = kPlain;
    for (int i = 0; i < trimmed.size(); ++i) {
        const QChar c = trimmed.at(i);
        switch (quote) {
        case kSingle:
            if (c == QLatin1Char('\''))
                quote = kPlain;
            else
                word.append(c);
            break;
        case kDouble:
            if (c == QLatin1Char('"')) {
                quote = kPlain;
            } else if (c == QLatin1Char('\\') && i + 1 < trimmed.size()
                && (trimmed.at(i + 1) == QLatin1Char('"') || trimmed.at(i + 1) == QLatin1Char('\\'))) {
                word.append(trimmed.at(++i));
            } else {
                word.append(c);
            }
            break;
        case kPlain:
            if (c.isSpace()) {
                if (inWord) {
                    words->append(word);
                    word.clear();
                    inWord = false;
                }
            } else if (c == QLatin1Char('\'')) {
                quote = kSingle;
                inWord = true;
            } else if (c == QLatin1Char('"')) {
                quote = kDouble;
                inWord = true;
            } else if (c == QLatin1Char('\\') && i + 1 < trimmed.size()) {
                word.append(trimmed.at(++i));
                inWord = true;
            } else {
                word.append(c);
                inWord = true;
            }
            break;
        }
    }
    if (quote != kPlain) {
        *error = QStringLiteral("unterminated quote");
        words->clear();
        return false;
    }
    if (inWord)
        words->append(word);
    return true;
}

}   // namespace hdeapp
