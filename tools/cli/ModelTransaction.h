// CModelTransaction holds a data model transaction for a scope: begun on construction, rolled
// back on the way out unless Commit was called. The model's transactions nest, so batch tools
// that open their own inside it only count down, and the outer one decides: a failure anywhere
// leaves the database as it was.
//
// Threading contract: the thread that uses the model.
#ifndef ANNOTATIONLAYER_CLI_MODEL_TRANSACTION_H
#define ANNOTATIONLAYER_CLI_MODEL_TRANSACTION_H

class IAnnotationDBDataModel;

class CModelTransaction {
 public:
  explicit CModelTransaction(IAnnotationDBDataModel* model);
  ~CModelTransaction();
  CModelTransaction(const CModelTransaction&) = delete;
  CModelTransaction& operator=(const CModelTransaction&) = delete;

  bool IsOpen() const { return open_; }
  bool Commit();

 private:
  IAnnotationDBDataModel* model_;
  bool open_;
};

#endif  // ANNOTATIONLAYER_CLI_MODEL_TRANSACTION_H
