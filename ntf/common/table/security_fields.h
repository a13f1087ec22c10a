// The security group that every header carries: its record, and its format.
#pragma once

#include "table/header_table.h"

namespace ksntfx {

/** The security fields that every header carries under its own prefix (MIL-STD-2500C, tables ). */
struct SecurityFields {
  char CLAS[2];
  char CLSY[3];
  char CODE[41];
  char CTLH[41];
  char REL[41];
  char DCTP[3];
  char DCDT[9];
  char DCXM[5];
  char DG[2];
  char DGDT[9];
  char CLTX[44];
  char CATP[2];
  char CAUT[41];
  char CRSN[2];
  char SRDT[9];
  char CTLN[21];
  char DWNG[7];
  char DEVT[41];
};

/** The fields of the group, with and without a NUL behind each text. */
extern const HeaderTable kSecurityTable;
extern const HeaderTable kUnterminatedSecurityTable;

/** The security group, whose fields are named after `prefix`. `rules` are SecurityRule bits. */
constexpr HeaderRow SecurityRow(std::string_view prefix, std::size_t place, unsigned rules,
                                const HeaderTable &fields = kSecurityTable) {
  HeaderRow row;
  row.kind = HeaderRow::Kind::Security;
  row.name = prefix;
  row.place = static_cast<std::uint32_t>(place);
  row.securityRules = static_cast<std::uint8_t>(rules);
  row.fields = &fields;
  return row;
}

}  // namespace ksntfx
