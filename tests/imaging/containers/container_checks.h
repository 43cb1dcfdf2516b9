#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>

namespace orvane::test {

/// The text of the Failure that `work` throws; empty when it throws none.
std::string failureOf(const std::function<void()>& work);

/// Runs `work` in a process of its own that may write files up to `limit` bytes, as on a full disk.
/// True when it ended without a Failure.
bool succeedsUnderSizeLimit(std::uint64_t limit, const std::function<void()>& work);

/// How many bytes and calls `work` took to read and to write, by the kernel's own count.
std::map<std::string, std::int64_t> inputAndOutputOf(const std::function<void()>& work);

/// Puts a byte of `bytes` to another value for each of `count` damaged copies, and cuts the file
/// short for as many more; `tryOut` sees the file under `path` each time.
void withDamagedCopies(const std::filesystem::path& path, const std::string& bytes, int count,
                       const std::function<void()>& tryOut);

}  // namespace orvane::test
