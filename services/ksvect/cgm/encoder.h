// Elements of a metafile as bytes: headers, partitions, and the parameters by their types.
#pragma once

#include "ksvect/cgm/elements.h"
#include "ksvect/model/drawing.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ksvect::cgm {

/** How coordinates and lengths are written. */
enum class VdcForm : std::uint8_t { Integer16, Integer32, Fixed32, Float64 };

/** How numbers and texts are written. The values here are the defaults of a metafile. */
struct Forms {
  VdcForm vdc = VdcForm::Integer16;
  bool floatingReals = false; /**< 64 bits; otherwise 16 bits before the point and 16 behind it */
  bool longIntegers = false;  /**< 32 bits instead of 16 */
  bool utf8 = false;          /**< instead of Latin 1 */
  bool profile = true;        /**< nothing but what MIL-STD-2301A has */
};

/** What the numbers and elements written so far need. */
struct NumberSurvey {
  bool encodable = true;   /**< all are numbers */
  bool whole = true;       /**< coordinates and lengths have no fraction */
  bool nearlyWhole = true; /**< no fraction of a 131072th of a unit or more */
  double vdc = 0;          /**< the greatest coordinate or length, without its sign */
  double real = 0;         /**< the greatest other number, likewise */
  std::int32_t integer = 0;
  bool beyondAscii = false;
  bool beyondLatin1 = false;
  bool beyondProfile = false; /**< an element isn't one of MIL-STD-2301A */
};

/** Appends elements to a metafile. Numbers must fit its forms; a survey with the widest ones finds which do. */
class Encoder {
 public:
  Encoder(std::vector<std::uint8_t> &bytes, const Forms &used) : data(bytes), forms(used) {}

  /** Begins an element and returns the offset of its parameters. Elements may be nested. */
  std::size_t Begin(ElementCode code);
  /** Ends the element whose parameters begin at that offset: header, partitions and padding. */
  void End(std::size_t parameters);
  /** Removes the element. */
  void Drop(std::size_t parameters);
  std::span<const std::uint8_t> Parameters(std::size_t from) const { return std::span(data).subspan(from); }

  void SetForms(const Forms &used) { forms = used; }
  const Forms &InForce() const { return forms; }
  /** Whether y runs the other way in the metafile than in the drawing. */
  void TurnUpsideDown(bool turn) { ySign = turn ? -1 : 1; }
  bool IsUpsideDown() const { return ySign < 0; }
  /** The drawing cannot be written as a metafile. */
  void Refuse() { seen.encodable = false; }
  const NumberSurvey &Seen() const { return seen; }

  void Enumeration(unsigned value) { Put(value, 2); }
  void Index(int value) { Put(static_cast<std::uint32_t>(value), 2); }
  void Integer(std::uint32_t value);
  void Real(double value);
  void Vdc(double value);
  /** A place, or a vector with a length. */
  void Place(Point point);
  /** Directions whose common length has no meaning: as they are where they fit exactly, otherwise as exact as can be.
   */
  void Directions(std::initializer_list<Point> vectors);
  /** A direction in a form that depends on nothing but itself. */
  void Ray(Point vector);
  void DirectColor(Color color);
  /** Rows of colours, each of an even number of bytes. */
  void Rows(std::span<const Color> colors, std::size_t columns);
  /** A string of these bytes. */
  void Bytes(std::string_view bytes);
  /** UTF-8 as a string of the form in force, with a question mark for what is no character. */
  void Text(std::string_view text);

 private:
  void Put(std::uint64_t value, unsigned bytes);
  void Fixed(double value);
  void Float64(double value);
  void ScaledDirection(double component, double scale);
  bool IsExact(double value) const;
  void Partition(std::size_t parameters, std::size_t size);

  std::vector<std::uint8_t> &data;
  Forms forms;
  NumberSurvey seen;
  double ySign = 1;
  std::string characters;
};

}  // namespace ksvect::cgm
