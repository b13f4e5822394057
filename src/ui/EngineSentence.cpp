#include "ui/EngineSentence.h"

#include <QCoreApplication>
#include <QLocale>
#include <QRegularExpression>
#include <algorithm>

#include "ui/Texts.h"

namespace zolvar {
namespace {

constexpr const char* Keys[] = {
#include "ui/EngineTexts.inc"
};

QString translated(const char* key) { return QCoreApplication::translate("Zolvar", key); }

/// What the engine puts into its sentences is mostly a name, which stays; but it may be a count of
/// files, a reason or a whole sentence.
QString saidField(const QString& value) {
  static const QRegularExpression Counted("^\\d+ (files?|address(es)?)$");
  const bool isWords = Counted.match(value).hasMatch() ||
                       (value.contains(' ') && (value.endsWith('.') || value.at(0).isLower()));
  const QString words = isWords ? said(value.toStdString()) : value;
  const bool isName = words == value && value.size() > 1;
  return isName && QCoreApplication::translate("Zolvar", "{} file") != "{} file" ? isolated(value)
                                                                                 : words;
}

/// "Could not open 'x': Permission denied." is put together from what was tried and why it failed.
QString saidFailure(const QString& text) {
  const QString sentence = text.chopped(1);
  const qsizetype end = sentence.lastIndexOf("': ");
  const QString attempt = end < 0 ? sentence : sentence.left(end + 1);
  for (const auto& candidate : engineSentences()) {
    const auto fields = candidate.fieldsOf(attempt);
    if (fields.empty()) continue;
    const QString words = EngineSentence::filled(translated(candidate.key()), fields);
    return (end < 0 ? words : words + ": " + said(sentence.mid(end + 3).toStdString())) + '.';
  }
  return text;
}

}  // namespace

EngineSentence::EngineSentence(const char* key)
    : key_(key), pieces_(piecesOf(QString::fromUtf8(key))) {
  for (const auto& piece : pieces_) weight_ += piece.words.size();
}

std::vector<EngineSentence::Piece> EngineSentence::piecesOf(const QString& text) {
  static const QRegularExpression Field("\\{(\\d?)(:[^}]*)?\\}");
  std::vector<Piece> pieces;
  qsizetype from = 0;
  int next = 0;
  for (auto found = Field.globalMatch(text); found.hasNext();) {
    const auto match = found.next();
    const int number = match.capturedLength(1) > 0 ? match.captured(1).toInt() : next++;
    pieces.push_back({text.mid(from, match.capturedStart() - from), number, match.hasCaptured(2)});
    from = match.capturedEnd();
  }
  pieces.push_back({text.mid(from)});
  return pieces;
}

std::vector<QString> EngineSentence::fieldsOf(const QString& text) const {
  std::vector<QString> fields;
  const QString& end = pieces_.back().words;
  if (pieces_.size() < 2 || !text.startsWith(pieces_.front().words) || !text.endsWith(end) ||
      text.size() < weight_) {
    return {};
  }
  qsizetype at = 0;
  for (std::size_t each = 0; each + 1 < pieces_.size(); ++each) {
    at += pieces_[each].words.size();
    const bool isLast = each + 2 == pieces_.size();
    const qsizetype next =
        isLast ? text.size() - end.size() : text.indexOf(pieces_[each + 1].words, at);
    if (next < at) return {};
    const auto field = static_cast<std::size_t>(pieces_[each].field);
    if (fields.size() <= field) fields.resize(field + 1);
    fields[field] = text.mid(at, next - at);
    if (pieces_[each].isDecimal) fields[field].replace('.', QLocale().decimalPoint());
    at = next;
  }
  return fields;
}

QString EngineSentence::filled(const QString& translation, const std::vector<QString>& fields) {
  QString text;
  for (const auto& piece : piecesOf(translation)) {
    text += piece.words;
    if (piece.field < 0 || piece.field >= static_cast<int>(fields.size())) continue;
    const QString& value = fields[static_cast<std::size_t>(piece.field)];
    if (!value.isEmpty()) text += saidField(value);
  }
  return text;
}

const std::vector<EngineSentence>& engineSentences() {
  static const std::vector<EngineSentence> Sentences = [] {
    std::vector<EngineSentence> sentences(std::begin(Keys), std::end(Keys));
    std::stable_sort(sentences.begin(), sentences.end(), [](const auto& left, const auto& right) {
      return left.weight() > right.weight();
    });
    return sentences;
  }();
  return Sentences;
}

QString said(const std::string& text) {
  const QString whole = toQt(text);
  if (text.empty()) return whole;
  const QString same = translated(text.c_str());
  if (same != whole) return same;
  if (whole.startsWith("Could not ") && whole.endsWith('.')) return saidFailure(whole);
  for (const auto& sentence : engineSentences()) {
    const QString translation = translated(sentence.key());
    if (translation == QString::fromUtf8(sentence.key())) continue;
    const auto fields = sentence.fieldsOf(whole);
    if (!fields.empty()) return EngineSentence::filled(translation, fields);
  }
  // A heading, then names in lines.
  const qsizetype end = whole.indexOf('\n');
  if (end <= 0) return whole;
  const QString heading = said(whole.left(end).toStdString());
  return heading + whole.mid(end);
}

}  // namespace zolvar
