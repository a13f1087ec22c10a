// The data extension subheader (MIL-STD-2500C, table A-8): data that the reader carries and doesn't interpret.
#pragma once

#include "table/security_fields.h"

namespace ksntfx {

struct DataExtensionSubheader {
  std::uint32_t valid; /**< 1 once the marker was accepted */
  char DE[3];
  char DESID[26];
  char DESVER[3];
  SecurityFields security; /**< DESCLAS to DESCTLN */
  char DESOFLW[7];
  char DESITEM[4];
  char DESSHL[5];
  char *userData; /**< DESSHF with a NUL behind it; null while DESSHL is 0 */
  std::uint32_t userDataHeld;
};

/**
 * The format of the data extension subheader, as the strict interfaces read it; and as it is, which in the 2.0 layout
 * is another one.
 */
extern const HeaderTable kDataExtensionTable;
extern const HeaderTable kWideDataExtensionTable;

/** Gives a record the state of one that was never read: all bytes 0. */
void DataExtensionSubheaderInit(DataExtensionSubheader *record);

/** Releases what the record points to; may be called twice. */
void DataExtensionSubheaderFree(DataExtensionSubheader *record);

}  // namespace ksntfx
