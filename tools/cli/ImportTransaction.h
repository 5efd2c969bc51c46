// CImportTransaction keeps a batch importer's transaction open until Commit and discards the
// import on every other way out of the scope (a failure, an early return, an interruption), so
// that a failed import leaves the database as it was.
//
// Threading contract: used on the thread that runs the import.
#ifndef ANNOTATIONLAYER_CLI_IMPORT_TRANSACTION_H
#define ANNOTATIONLAYER_CLI_IMPORT_TRANSACTION_H

class CFeatureBatchImporter;

class CImportTransaction {
 public:
  // Borrows `importer`, which must have begun its import and outlive the scope.
  explicit CImportTransaction(CFeatureBatchImporter* importer) : importer_(importer) {}
  ~CImportTransaction();
  CImportTransaction(const CImportTransaction&) = delete;
  CImportTransaction& operator=(const CImportTransaction&) = delete;

  // Ends the import; false when its commit failed (the importer has then rolled back).
  bool Commit();

 private:
  CFeatureBatchImporter* importer_;
};

#endif  // ANNOTATIONLAYER_CLI_IMPORT_TRANSACTION_H
