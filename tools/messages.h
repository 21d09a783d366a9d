#pragma once

#include <string>
#include <vector>

namespace tarnwick::tool {

// Collects what the library tells through its message box. One at a time may live.
class Messages {
  public:
    Messages();
    ~Messages();
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    void clear() { texts().clear(); }
    // What was told since the last clear, the first first.
    const std::vector<std::string>& list() const { return texts(); }
    // The same as one text. The last message names the place, those before it the cause; the two may
    // differ in their first letter alone.
    std::string joined() const;

  private:
    static std::vector<std::string>& texts();
};

}  // namespace tarnwick::tool
