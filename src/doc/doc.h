// CDoc: one open circuit file.
//
// The document keeps the XML tree of its file for its whole life and saves
// from that same tree: whatever the library does not understand (drawings,
// views, settings of other analyses, unknown attributes) is written back in
// place and order. A save only patches the parts the library owns.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "doc/doc_settings.h"
#include "doc/xml_node.h"

namespace tz4 {

class CDoc {
 public:
  CDoc();
  virtual ~CDoc();
  CDoc(const CDoc&) = delete;
  CDoc& operator=(const CDoc&) = delete;

  // Reads the file into a fresh tree, checks "Version" (above 2 is refused),
  // and archives "Doc". False, with no message of its own, for an unreadable
  // file, a file without the root element, too new a version or no "Doc".
  bool Load(const std::string& path);

  // The archive routine of the "Doc" element, in the direction of its
  // `storing` flag: "Calc", "Tran"/"Settings" and "Cmps" ("Options"). Each
  // child is found when loading and added when storing. False only for a
  // null element.
  bool Serialize(CXmlNode* docElement);

  // Writes the tree to `path` after patching what the library owns: "step"
  // on "Tran"/"Settings", "timeout" on "Calc", "Options" on "Cmps" when not
  // 0. With bit 1 of the save flags, also the "StorageList" and "DataList"
  // elements and, behind the XML, a zero byte and the sample data. The tree
  // stays in store direction afterwards. `fileName` is not changed.
  bool Save(const std::string& path);

  // The flags of attribute "save": from "Doc" if it has one, else from its
  // child "Properties", else 0.
  static int SaveFlags(CXmlNode& docElement);

  // Rebuilds the description of the stored data under `tran`: "StorageList"
  // (found and emptied, or added) with one "Storage" element, and for the
  // k-th child of "Traces" a "DataList" with one "Data" element of
  // sampleCounts[k] samples, stopping at the first index without a count or
  // with a count of 0.
  static void PrepareDataLists(CXmlNode& tran, const std::vector<int>& sampleCounts);

  // Bit of the save flags that asks for result data in the file.
  static constexpr int kSaveData = 2;

  int32_t handle = -1;            // the host's number; -1 until listed
  std::string fileName;           // the path given to Load
  std::string directory;          // directory part of fileName, with separator
  std::unique_ptr<CXmlNode> xml;  // root of the file's tree; null before Load
  uint32_t options = 0;           // attribute "Options" of "Cmps"
  CDocSettings settings;          // "Calc" and "Tran"/"Settings"

 private:
  // Appends the zero byte that ends the XML text, followed by the samples
  // of the recorded traces (none while the document holds no trace list).
  bool AppendDataTail(const std::string& path);
};

}  // namespace tz4
