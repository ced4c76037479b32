#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <charconv>
#include <string>

#include "platform/fields/QuoteView.h"
#include "sdk/Text.h"
#include "shared/DictionaryRecords.h"
#include "shared/MarketRecords.h"
#include "shared/ResultStatus.h"

namespace orvane {

/// The flag of a publication, of quotes, bars or records, that tells of something that has just
/// happened. Without it what is published counts as history.
inline constexpr int kLive = 1;

/// A dictionary record that carries fields: its text is their compact JSON, GBK. `key` is a time
/// as a rule, UTC milliseconds; in playback nobody sees a record before its key.
inline Record jsonRecord(int64 key, const QJsonObject& fields) {
  Record record;
  record.key = key;
  record.text = gbk(QString::fromUtf8(QJsonDocument(fields).toJson(QJsonDocument::Compact)));
  return record;
}

/// The fields of such a record; empty if its text is no JSON object.
inline QJsonObject recordFields(const Record& record) {
  return QJsonDocument::fromJson(QByteArray::fromStdString(utf8(record.text))).object();
}

/// How many publications waited when one went well, as the answer to `publishRecords` tells; -1
/// if it was refused.
inline int64 queueDepth(const ResultStatus& status) {
  int64 depth = 0;
  if (status.code != 0) return -1;
  std::from_chars(status.message.data(), status.message.data() + status.message.size(), depth);
  return depth;
}

/// A quote to publish: one trade at `price`. More of it is filled in with `QuoteWriter`.
inline IDepthMarketData tradeQuote(const ICodeID& code, int64 utcMs, double price,
                                   double volume = 0) {
  IDepthMarketData quote;
  quote.code = code;
  QuoteWriter writer(quote);
  writer.setTime(utcMs);
  writer.set(quote::LastPrice, price);
  writer.set(quote::Volume, volume);
  writer.set(quote::Flags, quote::kHasTrade);
  return quote;
}

}  // namespace orvane
