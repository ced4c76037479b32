#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <string>

#include "host/SessionGenerator.h"

namespace orvane {

/// An instrument of a synthetic session, as `instruments.json` lists it.
QJsonObject instrumentJson(const SyntheticInstrument& instrument);

/// A file `instruments.json` of these.
QJsonDocument instrumentsJson(const QJsonArray& instruments);

/// How the files of a session are to be read.
QJsonDocument sessionFormatJson();

/// The name of an instrument's bar file.
std::string barFileName(const SyntheticInstrument& instrument);

}  // namespace orvane
