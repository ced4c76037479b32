#include "host/EventConfig.h"

#include <fmt/core.h>

#include <QJsonArray>
#include <iterator>
#include <utility>

#include "host/ConfigPaths.h"
#include "host/InputError.h"
#include "host/TimeArgument.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

EventPlan readEvent(const QJsonValue& json, const std::string& place) {
  JsonReader reader(json, place);
  EventPlan plan;
  plan.place = place;
  plan.time = reader.requiredText("time");
  plan.event.target = utf8ToGbk(reader.requiredText("target"));
  plan.event.name = utf8ToGbk(reader.requiredText("name"));
  plan.event.key = utf8ToGbk(reader.text("key"));
  if (const QJsonValue fields = reader.value("fields"); !fields.isUndefined()) {
    JsonReader values(fields, reader.place("fields"));
    for (const QString& key : fields.toObject().keys()) {
      const std::string name = key.toStdString();
      plan.event.fields[utf8ToGbk(name)] = utf8ToGbk(values.text(name.c_str()));
    }
  }
  reader.close();
  return plan;
}

std::vector<EventPlan> readScript(const QJsonArray& script, const std::string& place) {
  std::vector<EventPlan> result;
  for (qsizetype i = 0; i < script.size(); ++i)
    result.push_back(readEvent(script[i], fmt::format("{}[{}]", place, i)));
  return result;
}

}  // namespace

void readEvents(JsonReader& reader, const std::string& configPath, RunPlan& plan) {
  const QJsonValue found = reader.value("events");
  if (found.isUndefined()) return;
  if (found.isString()) {
    reader.filledText("events");
    plan.eventFiles.push_back(besides(configPath, found.toString().toStdString()));
    plan.events = eventsOfFile(plan.eventFiles.back());
  } else if (found.isArray()) {
    plan.events = readScript(found.toArray(), reader.place("events"));
  } else {
    reader.refuse("events", "must be an array of events or the name of a file that holds one");
  }
}

std::vector<EventPlan> eventsOfFile(const std::string& path) {
  const QJsonValue script = readJsonFile(path);
  if (!script.isArray())
    throw InputError(
        fmt::format("{}: must hold a JSON array of events, not {}", path, jsonText(script)));
  return readScript(script.toArray(), path + ": ");
}

EventOptions eventOptions(const RunPlan& plan, const std::string& timeZone) {
  EventOptions options;
  for (const EventPlan& planned : plan.events) {
    ScriptedEvent event = planned.event;
    event.time = parseTimeArgument(planned.time, timeZone, planned.place + ".time");
    options.script.push_back(std::move(event));
  }
  return options;
}

}  // namespace orvane
