#include "platform/market/files/DataFiles.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "platform/market/files/BarFile.h"
#include "platform/market/files/CacheFile.h"
#include "platform/market/files/CacheFolder.h"
#include "platform/market/files/Description.h"
#include "platform/market/files/Table.h"
#include "platform/market/files/TickFile.h"

namespace orvane {
namespace detail {
namespace {

std::string timeText(std::int64_t utcMs) {
  std::int64_t day = utcMs / kDayMs;
  if (utcMs % kDayMs < 0) --day;
  const std::int64_t ms = utcMs - day * kDayMs;
  const int date = numberOfDay(day);
  char text[40];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d:%02d.%03d UTC", date / 10000,
                date / 100 % 100, date % 100, static_cast<int>(ms / 3'600'000),
                static_cast<int>(ms / 60'000 % 60), static_cast<int>(ms / 1000 % 60),
                static_cast<int>(ms % 1000));
  return text;
}

std::int64_t firstTime(const BarPart& part) { return part.bars.front().words[0]; }
std::int64_t lastTime(const BarPart& part) { return part.bars.back().words[0]; }
std::int64_t firstTime(const TickPart& part) { return part.times.front(); }
std::int64_t lastTime(const TickPart& part) { return part.times.back(); }

/// The parts of one code, and what was noted about their files.
template <typename Part>
struct Group {
  std::string code;
  std::string timeZone;  ///< If their rows tell it.
  std::vector<Part> parts;
  std::vector<std::string> notes;
};

void addNotes(std::vector<std::string>& notes, const std::vector<std::string>& more) {
  for (const std::string& note : more)
    if (std::find(notes.begin(), notes.end(), note) == notes.end()) notes.push_back(note);
}

std::string lowered(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return text;
}

std::string withMarket(const std::string& code, const std::string& market) {
  return market.empty() || code.find('.') != std::string::npos ? code : code + "." + market;
}

/// Reads the files of a request and sorts what they hold by code.
template <typename Part>
class Gathering {
 public:
  Gathering(const DataFileRequest& request, const Description& description, bool bars)
      : request_(request), description_(description), bars_(bars) {
    tick_ = description.priceTick;
    if (tick_.mantissa == 0 && !request.priceTick.empty() && !parseStep(request.priceTick, tick_))
      throw DataFileError("the price tick \"" + request.priceTick + "\" is no decimal above 0");
    const char* kind = bars ? "bars" : "ticks";
    if (!description.kind.empty() && description.kind != kind)
      throw DataFileError("description: \"kind\" is \"" + description.kind +
                          "\", but the files are to be read as " + kind);
    if (request.paths.empty()) throw DataFileError("no file is named");
  }

  template <typename Read>
  std::vector<Group<Part>> run(const Read& read, const std::function<void(double)>& progress) {
    const double files = static_cast<double>(request_.paths.size());
    for (std::size_t i = 0; i < request_.paths.size(); ++i) {
      const double before = static_cast<double>(i) / files;
      std::function<void(double)> share;
      if (progress) share = [&, before](double done) { progress(before + done / files); };
      Table table(request_.paths[i], description_, bars_, request_.pace.threads);
      std::vector<Part> parts =
          read(table, description_, tick_, request_.pace, share, request_.onFault);
      if (parts.empty()) throw DataFileError(table.path() + ": has no rows");
      for (Part& part : parts) add(std::move(part), table);
    }
    if (progress) progress(1.0);
    applyCode();
    for (Group<Part>& group : groups_) putInOrder(group);
    return std::move(groups_);
  }

 private:
  void add(Part part, Table& table) {
    std::string code = part.code;
    if (code.empty() && !request_.code.empty()) code = request_.code;
    if (code.empty() && !description_.code.empty()) code = description_.code;
    if (code.empty()) code = table.nameFacts().code;
    code = withMarket(code, description_.market);
    // Files that tell their zone and period make series of their own.
    const auto found = std::find_if(groups_.begin(), groups_.end(), [&](const auto& group) {
      return group.code == code && group.timeZone == part.timeZone;
    });
    Group<Part>& group = found != groups_.end() ? *found : groups_.emplace_back();
    group.code = code;
    group.timeZone = part.timeZone;
    group.parts.push_back(std::move(part));
    addNotes(group.notes, table.notes());
  }

  /// A code that was asked for names the only one there is, or chooses among several.
  void applyCode() {
    const std::string& asked = request_.code.empty() ? description_.code : request_.code;
    if (asked.empty()) return;
    const std::string code = withMarket(asked, description_.market);
    const bool isOne = std::all_of(groups_.begin(), groups_.end(), [this](const auto& group) {
      return group.code == groups_.front().code;
    });
    const auto isAsked = [&](const Group<Part>& group) {
      const std::string bare = group.code.substr(0, group.code.find('.'));
      return isOne || lowered(group.code) == lowered(code) || lowered(bare) == lowered(code);
    };
    if (const auto first = std::find_if(groups_.begin(), groups_.end(), isAsked);
        first != groups_.end()) {
      const std::string chosen = first->code;
      std::erase_if(groups_, [&](const auto& group) { return group.code != chosen; });
      for (Group<Part>& group : groups_) group.code = code;
      return;
    }
    std::string held;
    for (const Group<Part>& group : groups_)
      if (held.size() < 200) held += (held.empty() ? "" : ", ") + group.code;
    throw DataFileError(request_.paths.front() + ": no rows of the code \"" + asked +
                        "\"; there are " + held);
  }

  void putInOrder(Group<Part>& group) const {
    std::vector<Part>& parts = group.parts;
    std::stable_sort(parts.begin(), parts.end(),
                     [](const Part& a, const Part& b) { return firstTime(a) < firstTime(b); });
    for (std::size_t i = 1; i < parts.size(); ++i) {
      const std::int64_t end = lastTime(parts[i - 1]);
      const std::int64_t begin = firstTime(parts[i]);
      if (bars_ ? begin > end : begin >= end) continue;
      throw DataFileError(parts[i].path + " overlaps " + parts[i - 1].path + ": it begins at " +
                          timeText(begin) + ", and the other ends at " + timeText(end));
    }
  }

  const DataFileRequest& request_;
  const Description& description_;
  bool bars_;
  DecimalStep tick_;
  std::vector<Group<Part>> groups_;
};

template <typename Part>
std::string originOf(const std::vector<Part>& parts) {
  std::string origin;
  for (const Part& part : parts) origin += (origin.empty() ? "" : ", ") + part.path;
  return origin;
}

/// The zone of a group: the one that its rows tell, or else the description, or else UTC.
template <typename Part>
ZoneClock zoneOf(const Group<Part>& group, const Description& description) {
  if (!group.timeZone.empty()) return ZoneClock(group.timeZone);
  return ZoneClock(description.timeZone.empty() ? "UTC" : description.timeZone);
}

void noteZone(std::vector<std::string>& notes, const Description& description,
              const std::string& ownZone) {
  if (description.timeZone.empty() && ownZone.empty())
    notes.push_back("times are taken as UTC; \"timeZone\" in a description tells another zone");
}

/// What a description says of bars; of ticks it passes unnoticed. Of a file whose rows are whole
/// the stamp was noted before.
void noteBarKeys(std::vector<std::string>& notes, const Description& description, bool areWhole) {
  std::string keys;
  const bool hasStamp = description.stampIsEnd.has_value() && !areWhole;
  for (const auto& [isGiven, key] : {std::pair(hasStamp, "stamp"),
                                     {description.periodMs != 0, "period"},
                                     {description.side.has_value(), "side"}})
    if (isGiven) keys += (keys.empty() ? "\"" : ", \"") + std::string(key) + "\"";
  if (!keys.empty()) notes.push_back(keys + " changes nothing for ticks; it is for bars");
}

std::vector<LoadedBars> readBarFiles(const DataFileRequest& request,
                                     const std::function<void(double)>& progress) {
  const Description description = readDescription(request.description);
  auto groups = Gathering<BarPart>(request, description, true).run(readBars, progress);
  std::vector<LoadedBars> loaded;
  for (auto& group : groups) {
    const ZoneClock zone = zoneOf(group, description);
    LoadedBars one;
    one.code = group.code;
    one.series.timeZone = zone.name();
    one.series.origin = originOf(group.parts);
    noteZone(one.notes, description, group.timeZone);
    addNotes(one.notes, group.notes);
    one.series.bars = group.timeZone.empty()
                          ? finishBars(group.parts, description, zone, request.pace.threads,
                                       one.series.periodMs, one.notes)
                          : finishWholeBars(group.parts, zone, one.series.periodMs);
    one.series.isOrdered = true;
    loaded.push_back(std::move(one));
  }
  return loaded;
}

std::vector<LoadedTicks> readTickFiles(const DataFileRequest& request,
                                       const std::function<void(double)>& progress) {
  const Description description = readDescription(request.description);
  auto groups = Gathering<TickPart>(request, description, false).run(readTicks, progress);
  std::vector<LoadedTicks> loaded;
  for (auto& group : groups) {
    LoadedTicks one;
    one.code = group.code;
    one.series.timeZone = zoneOf(group, description).name();
    one.series.origin = originOf(group.parts);
    noteZone(one.notes, description, group.timeZone);
    noteBarKeys(one.notes, description, !group.timeZone.empty());
    addNotes(one.notes, group.notes);
    for (TickPart& part : group.parts) appendTicks(one.series, std::move(part));
    one.series.isOrdered = true;
    loaded.push_back(std::move(one));
  }
  return loaded;
}

/// What a cache holds was read when it was made: a description can name it, but not change it.
template <typename Loaded>
void checkDescription(const std::string& path, const QJsonObject& json,
                      const std::vector<Loaded>& all) {
  const Description description = readDescription(json);
  for (const QString& key : json.keys()) {
    if (key == "code" || key == "market" || key == "kind") continue;
    if (key != "timeZone")
      throw DataFileError(path + ": a cache is read already, and \"" + key.toStdString() +
                          "\" cannot change it; say so when it is made");
    const std::string zone = ZoneClock(description.timeZone).name();
    for (const Loaded& one : all)
      if (one.series.timeZone != zone)
        throw DataFileError(path + ": the cache was made with times of the zone \"" +
                            one.series.timeZone + "\", not \"" + zone + "\"");
  }
}

/// Takes a series of a cache for the code that was asked for: the only one, or that of its name.
template <typename Loaded>
void chooseCode(const std::string& path, const DataFileRequest& request, std::vector<Loaded>& all) {
  const Description description = readDescription(request.description);
  for (Loaded& one : all) one.code = withMarket(one.code, description.market);
  const std::string& asked = request.code.empty() ? description.code : request.code;
  if (asked.empty()) return;
  const std::string code = withMarket(asked, description.market);
  if (all.size() > 1)
    std::erase_if(all, [&](const Loaded& one) {
      const std::string bare = one.code.substr(0, one.code.find('.'));
      return lowered(one.code) != lowered(code) && lowered(bare) != lowered(code);
    });
  if (all.empty()) throw DataFileError(path + ": no rows of the code \"" + asked + "\"");
  for (Loaded& one : all) one.code = code;
}

/// Loads the caches among the files of a request by themselves, and the others together.
template <typename Loaded, typename Read>
std::vector<Loaded> loadAll(const DataFileRequest& request, std::vector<Loaded> DataCache::*held,
                            const Read& read) {
  if (wantsCache(request))
    return std::move(
        loadThroughCache(request, [&](DataCache& cache) { cache.*held = read(request); }).*held);
  DataFileRequest others = request;
  others.paths.clear();
  std::vector<Loaded> all;
  for (const std::string& path : request.paths) {
    if (!isDataCache(path)) {
      others.paths.push_back(path);
      continue;
    }
    DataCache cache = openDataCache(path, request.checksCaches);
    std::vector<Loaded> these = std::move(cache.*held);
    if (these.empty() && cache.bars.empty() && cache.ticks.empty())
      throw DataFileError(path + ": the cache holds no series");
    if (these.empty())
      throw OtherKindError(path + ": the cache holds " +
                           (cache.bars.empty() ? "ticks, not bars; use --ticks for it"
                                               : "bars, not ticks; use --bars for it"));
    checkDescription(path, request.description, these);
    chooseCode(path, request, these);
    for (Loaded& one : these) {
      // What was named is what messages name; which files it was made of, the cache tells itself.
      one.series.origin = path;
      all.push_back(std::move(one));
    }
  }
  if (!all.empty() && others.paths.empty()) return all;
  for (Loaded& one : read(others)) all.push_back(std::move(one));
  return all;
}

}  // namespace
}  // namespace detail

std::vector<LoadedBars> loadBars(const DataFileRequest& request,
                                 const std::function<void(double)>& progress) {
  return detail::loadAll(request, &DataCache::bars, [&](const DataFileRequest& its) {
    return detail::readBarFiles(its, progress);
  });
}

std::vector<FileColumn> columnsOfFile(const DataFileRequest& request) {
  const std::string path = request.paths.empty() ? std::string() : request.paths.front();
  if (isDataCache(path)) return {};
  const detail::Description description = detail::readDescription(request.description);
  const detail::Table table(path, description, request.kind == DataFileRequest::Kind::Bars);
  const std::vector<std::string> meanings = table.meanings();
  std::vector<FileColumn> columns;
  for (std::size_t i = 0; i < meanings.size(); ++i)
    columns.push_back({table.names()[i], meanings[i]});
  return columns;
}

std::vector<LoadedTicks> loadTicks(const DataFileRequest& request,
                                   const std::function<void(double)>& progress) {
  return detail::loadAll(request, &DataCache::ticks, [&](const DataFileRequest& its) {
    return detail::readTickFiles(its, progress);
  });
}

}  // namespace orvane
