#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "batchdb/BatchStore.h"
#include "intake/IntakePlan.h"

/// Makes a waiting batch of a planned folder: whole or not at all. The batch is built in a folder
/// below `Batchs` that holds no batch, every page is read as an export reads it, everything is
/// synced, the folder takes its name, and one row is inserted. It may run while the program
/// exports.
namespace orvane {

struct IntakeProgress {
  std::uint64_t documents = 0;  ///< that are complete
  std::uint64_t pages = 0;
  std::uint64_t bytes = 0;  ///< of the page files that were written
};

/// Called now and then, on the caller's thread. If it throws, nothing remains.
using IntakeObserver = std::function<void(const IntakeProgress&)>;

/// Plans the batch `BatchID` from a folder of scans; an empty name stands for that of the folder. A
/// folder directly below `Batchs` is a batch already and is registered where it is, under its own
/// name. Writes nothing. Throws Failure with the reason if there is a row or another folder for the
/// batch already, and if the folder cannot be read or is somewhere else below `Batchs`.
IntakePlan planIntake(BatchStore& store, const std::wstring& folder, const std::wstring& BatchID);

/// Makes the batch of a plan without refusals: copies its pages below `Batchs`, or reads those that
/// are there already, and inserts the row. Throws Failure with the reason, and then leaves neither
/// a row nor anything that was written.
/// @param CreateDate  sorts by time, like "2024-03-01 08:30:00".
/// @return what was written, or read.
IntakeProgress carryOut(BatchStore& store, const IntakePlan& plan, const std::wstring& CreateDate,
                        const IntakeObserver& observe);

}  // namespace orvane
