// SPDX-License-Identifier: Apache-2.0
//
// The collectors of a run: which of them serves a class, loaded when it is first needed.
#pragma once

#include <deque>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/collectors/collector.h"

namespace velhost {

// Serves its own classes and those without a Provider, and is asked first.
inline constexpr char kFirmwareCollector[] = "SPFirmwareVPD";

struct CollectorFiles {
  std::vector<std::filesystem::path> loaded;    // in any case
  std::vector<std::filesystem::path> onDemand;  // when a class of theirs is needed: libNAME.pi.so
  // Which of those on demand there are, by name; nullopt: all.
  std::optional<std::set<std::string>> names = std::nullopt;
};

class CollectorSet {
 public:
  // Throws PluginLoadError when one has to be loaded and none can be.
  explicit CollectorSet(CollectorFiles files);

  // The next question to each of them begins with Init.
  void restart();

  // The collector of that name, loaded now if need be; null when there is none.
  Collector* named(const std::string& name);

  // Loads all that are there.
  void loadAll();

  // Whom to ask for a class of the schema: the collector that its Provider names; otherwise each of
  // those that were to be loaded in any case, or the firmware collector. Empty when there is none.
  std::vector<Collector*> serving(const std::string& className);

  // One line about a class for which there is none.
  std::string whyNotServed(const std::string& className) const;

  // True where a machine's file says which collectors there are, and one of them is missing for the
  // class: others are asked in its place, and refuse.
  bool isLeftOut(const std::string& className);

  const std::deque<Collector>& loaded() const { return collectors_; }

  struct NotLoaded {
    std::filesystem::path file;
    std::string reason;
  };
  const std::vector<NotLoaded>& notLoaded() const { return notLoaded_; }

  // Why the collector of that name could not be loaded; null: nothing was wrong with it.
  const std::string* whyNotLoaded(const std::string& name) const;

  // The first that was to be loaded in any case; null when none was.
  const PluginIdentity* first() const {
    return collectors_.empty() ? nullptr : &collectors_.front().identity();
  }

  // Lines about collectors that could not be loaded, since the last call.
  std::vector<std::string> takeFailures() { return std::exchange(failures_, {}); }

 private:
  bool isThere(const std::string& name) const;
  Collector* loadedByName(const std::string& name);
  Collector* loadedFrom(const std::filesystem::path& file, const std::string& name);
  bool load(const std::filesystem::path& file);

  NKRXVEL20::host::PluginLoader loader_;
  CollectorFiles files_;
  std::deque<Collector> collectors_;  // pointers to them stay good
  std::vector<Collector*> loadedAnyway_;
  std::vector<NotLoaded> notLoaded_;
  std::vector<NotLoaded> misnamed_;  // loaded, but no use under the name that they were looked for
  std::vector<std::string> failures_;
};

}  // namespace velhost
