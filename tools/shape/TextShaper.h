// Vemo's text shaping with everything around it as the command line says.
//
// Main thread.
#pragma once

#include <QString>
#include <memory>

namespace vemo {

struct ShapeOptions;

class TextShaper {
 public:
  /// Reads the workspace, if there is one. Nothing when there is no place for temporary files.
  static std::unique_ptr<TextShaper> create(const ShapeOptions& options);
  ~TextShaper();

  QString shape(const QString& text);

 private:
  struct Parts;
  explicit TextShaper(std::unique_ptr<Parts> parts);

  std::unique_ptr<Parts> m_parts;
};

}  // namespace vemo
