#pragma once

namespace orvane {

/// What a strategy does through its context, as far as a digest covers it. The values stand in
/// digests beside those of `CallKind`, so they never change.
enum class ActionKind : int {
  SetError = 32,
  SetFinish = 33,
  Stop = 34,
  NotifySpi = 35,
  SetEnvs = 36,
  SetEnv = 37,
  ClearEnv = 38,
  SetEnvItems = 39,
  SetEnvItem = 40,
  ClearEnvItems = 41,
  SubscribeQuote = 42,
  SubscribeKlineById = 43,
  SubscribeKline = 44,
  SetNotifyQuick = 45,
  SubscribeTradeSource = 46,
  SubscribeTradeCode = 47,
  SubscribeDic = 48,
  SubscribeDicSnapshot = 49,
  CreateTimer = 50,
  UnsubscribeQuote = 51,
  UnsubscribeKlineById = 52,
  UnsubscribeKline = 53,
  UnsubscribeDic = 54,
  UnsubscribeDicSnapshot = 55,
  StopTimer = 56,
  PublishQuoteList = 57,
  PublishQuoteSeries = 58,
  PublishQuoteItems = 59,
  PublishQuoteItems2 = 60,
  PublishOp5 = 61,
  PublishOp6 = 62,
  PublishOp7 = 63,
  PublishOp8 = 64,
  AttachAccount = 65,
  DetachAccount = 66,
  SendOrderIds = 67,
  SendOrder = 68,
  CancelOrder = 69,
  OrderAction = 70,
  PublishRecords = 71,
  RequestRange = 72,
};

}  // namespace orvane
