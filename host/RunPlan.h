#pragma once

#include <QJsonObject>
#include <map>
#include <string>
#include <vector>

#include "platform/events/EventOptions.h"
#include "platform/market/files/DataFiles.h"
#include "platform/reference/Instrument.h"
#include "platform/trade/TradeOptions.h"

namespace orvane {

/// One runner of a run. Texts are UTF-8.
struct RunnerPlan {
  std::string name;
  std::string strategy;    ///< As the user wrote it.
  std::string modulePath;  ///< The file that it was found at.
  std::string orderSource;
  std::string account;    ///< The account that it trades on.
  RiskLimits limits;      ///< Without its source.
  bool isServer = false;  ///< Publishes and works on accounts that the host offers.
  QJsonObject params;
};

/// A line of the connection script as the user wrote it. Texts are UTF-8.
struct ConnectionPlan {
  std::string place;  ///< Where it stands, for messages.
  std::string account;
  std::string time;
  bool isUp = false;
};

/// A series that runners publish, so that others can subscribe it from the start. Texts are UTF-8.
struct PublishedPlan {
  std::string place;  ///< Where it stands, for messages.
  std::string code;
  std::string frequency = "tick";
};

/// A general event of the script, its time as the user wrote it.
struct EventPlan {
  std::string place;  ///< Where it stands, for messages, UTF-8.
  std::string time;   ///< UTF-8.
  ScriptedEvent event;
};

/// Where the user said how files are to be read. Texts are UTF-8.
struct DescriptionPlaces {
  std::string place = "--format";              ///< Of the description as a whole.
  std::map<std::string, std::string> options;  ///< Of keys that stand elsewhere.
};

/// Files of one kind that are read in one way.
struct DataInput {
  DataFileRequest::Kind kind = DataFileRequest::Kind::Bars;
  std::string code;                ///< UTF-8; empty where the file tells it.
  std::vector<std::string> paths;  ///< UTF-8. With a code, they make one series.
  QJsonObject description;
  DescriptionPlaces places = {};
};

/// An instrument with the place that named it, for messages.
struct InstrumentInput {
  Instrument instrument;
  std::string origin;  ///< Such as "instruments.json: [2]" or "--instrument", UTF-8.
};

/// A file that a run reads beside its data. Texts are UTF-8.
struct ReadFile {
  std::string role;  ///< Such as "the params", for messages.
  std::string path;
};

/// The create source of the orders of grid conditions. No runner may have it.
inline constexpr const char* kGridOrderSource = "__grid__";

/// Everything that a run is made of, as command line and configuration give it.
struct RunPlan {
  std::vector<RunnerPlan> runners;
  std::vector<DataInput> data;
  std::string cacheFolder;  ///< Of caches of the data, UTF-8; empty: none are made.
  std::vector<InstrumentInput> instruments;
  /// Whether an instruments file was given: it is then the full list, and data of another code is
  /// an error.
  bool instrumentsAreComplete = false;
  std::string timeZone;  ///< IANA name; empty: that of the data.
  std::string from, to;  ///< As the user wrote them; empty: not given.
  double speed = 0;      ///< 0: as fast as it can.
  bool isLive = false;
  int threads = 0;  ///< 0: as many as the library asks for.
  std::string reportFolder;
  bool withDigest = true;
  TradeOptions trade;  ///< Sources, limits and the script are put in when the run begins.
  std::vector<ConnectionPlan> connections;
  std::string dictionaryFile;            ///< UTF-8; empty: records live in memory.
  std::vector<std::string> recordFiles;  ///< Of dictionary records, UTF-8.
  std::vector<std::string> indexFiles;   ///< Of what indexes are made of, UTF-8.
  std::vector<PublishedPlan> published;
  std::vector<EventPlan> events;
  std::vector<std::string> eventFiles;  ///< Where they were read, UTF-8.
  std::vector<ReadFile> otherFiles;     ///< Params, formats, instruments.
  /// Where the user gave a value, for messages, by the name that the platform has for it.
  std::map<std::string, std::string> places;
  std::string startBalance;  ///< Of accounts that nobody described; empty: the exchange's.

  /// The files of all market data, UTF-8.
  std::vector<std::string> dataFiles() const {
    std::vector<std::string> result;
    for (const DataInput& input : data)
      result.insert(result.end(), input.paths.begin(), input.paths.end());
    return result;
  }
};

}  // namespace orvane
