// CSubCir: what a component in its "SubCir" model holds. In a run such a
// component is replaced by the contents of another circuit: the inner
// collection, loaded from a file or from the component's attachment, with
// the commands of "ic" and "cmd" applied, and each outer pin joined to an
// inner label.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "components/param.h"

namespace tz4 {

class CCmp;
class CCmps;
class CElemSet;
class CXmlNode;

class CSubCir {
 public:
  CSubCir();
  virtual ~CSubCir();
  CSubCir(const CSubCir&) = delete;
  CSubCir& operator=(const CSubCir&) = delete;

  // Sizes the labels for `count` pins and drops the inner collection.
  void SetPinCount(int count);
  // Drops the inner collection and what was kept of it.
  void Clear();
  // Both directions of the "SubCir" child of a component's element: "file",
  // "label1".."labelN", "cmd", "ic". Loading does nothing without the child.
  void Serialize(CXmlNode& element);
  // "File", then "Pin1".."PinN": the table of the "SubCir" model.
  CParamTable BindParams();

  // Makes the inner collection ready for a run: loaded (or put back as it
  // stood after loading, when the file is the same), the commands applied,
  // formulas brought up to date, names given their path, parameters
  // checked. `folder` is where a file named without one is looked for.
  // False, with the reasons reported for `owner`, when it cannot be.
  bool Open(CCmp& owner, const std::string& folder, const CElemSet& types, bool check);
  // The initial conditions of the inner components, each named by its path
  // inside this subcircuit, joined by ";".
  std::string GetICText() const;

  std::unique_ptr<CCmps> cmps;      // the inner components
  std::string file;                 // "file"
  std::vector<std::string> labels;  // "label1".. : the inner label each pin joins
  std::string cmd;                  // "cmd"
  std::string ic;                   // "ic": commands that set initial conditions
  bool modified = false;
  int32_t pinCount = -1;
  std::string loadedFile;  // the "file" the inner collection was loaded from
  std::string snapshot;    // the inner "Cmps" element as it stood after loading

 private:
  bool Load(const std::string& name, CCmp& owner, const CElemSet& types);
  // Puts every inner component's values back as they stood after loading.
  void Restore();
  bool ApplyCommands(CCmp& owner);
};

}  // namespace tz4
