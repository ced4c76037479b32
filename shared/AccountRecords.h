#pragma once

#include <array>
#include <compare>
#include <limits>
#include <list>
#include <string>
#include <vector>

#include "shared/ResultStatus.h"
#include "shared/Types.h"

namespace orvane {

/// A connection's account, as a status report names it.
struct AccountID {
  Word first = 0;                 ///< Carried.
  std::int32_t counterType = -1;  ///< A code of `CounterTypeCodes`.
  std::int32_t fourth = 0;        ///< Carried.
  std::string text1;              ///< Carried.
  std::string text2;              ///< Carried.
  std::string text3;              ///< The account text.
};

/// One trading account. Ordering and equality look at `accountKey` alone.
struct TradingAccountID {
  std::int32_t accountKey = std::numeric_limits<std::int32_t>::max();
  std::int32_t second = std::numeric_limits<std::int32_t>::max();  ///< Carried.
  std::int32_t counterType = -1;  ///< A code of `CounterTypeCodes`.
  std::int32_t fourth = 0;        ///< Carried.
  std::string text1;              ///< First text of the account's text form.
  std::string text2;              ///< Carried.
  std::string account;            ///< The account text.
  std::int32_t currency = 11;     ///< Index of `currencyNames`; 11 is not known.
  std::int32_t infoKey = 0;       ///< Key of the first name table of `gBaseInformationMap`.
  std::int32_t hedgeFlag = 0;     ///< Index of `hedgeFlagNames`.
  std::int32_t eighth = 0;        ///< Carried.
  std::string text4;              ///< Carried.

  friend bool operator==(const TradingAccountID& a, const TradingAccountID& b) {
    return a.accountKey == b.accountKey;
  }
  friend std::strong_ordering operator<=>(const TradingAccountID& a, const TradingAccountID& b) {
    return a.accountKey <=> b.accountKey;
  }
};

/// The capital of one account.
struct TradingAccount {
  TradingAccountID account;
  std::array<Word, 23> block1{};
  Word value = 0;
  std::array<Word, 18> block2{};
};

/// A carried entry of a login report.
struct LoginItem {
  std::string text1, text2, text3, text4;
};

/// What a service says of a login; carried.
struct AccountLoginInfo {
  std::int32_t first = 0;
  std::string text1, text2;
  std::list<LoginItem> list1, list2;
  std::int32_t value1 = 0, value2 = 0;
  std::list<std::string> names;
  std::string text3, text4, text5, text6;
  std::int32_t last = 0;
};

/// What a status report says.
struct AccountStatusInfo {
  std::int32_t statusCode = 0;  ///< 16: the accounts in `accounts` are connected and readable.
  ResultStatus result;
  AccountLoginInfo login;
  std::vector<TradingAccountID> accounts;  ///< The trading accounts that the report covers.
  std::int32_t value = 0;                  ///< Carried.
};

/// The part of an `AccountRecord` that a reader receives only if the switch allows it.
struct AccountHiddenPart {
  std::string text1;
  std::int32_t value1 = 0;
  std::string text2, text3;
  std::int32_t value2 = 0;
  int64 value3 = 0;
};

/// An account that the host hands to the library for server runs.
struct AccountRecord {
  AccountID id;
  AccountLoginInfo login;
  std::string text1, text2;
  AccountHiddenPart hidden;
  std::string text3, text4, text5, text6, text7;
  std::list<TradingAccountID> tradingAccounts;
};

/// An account with the trading accounts behind it.
struct AccountLinks {
  AccountID id;
  std::list<TradingAccountID> tradingAccounts;
};

}  // namespace orvane
