#pragma once

#include "access/TableProvider.h"
#include "orvmysql/Routing.h"

namespace orvmysql {

// The threads of parallel routing (tblProcThreadInstance), keyed by the
// caller's text.
class CThreadInstanceDP : public TableProvider, public IThreadInstanceDP {
 public:
  // IThreadInstanceDP
  bool Add(const std::string& thread_id, const FieldArray& fields) override;
  bool Update(const std::string& thread_id, const FieldArray& fields) override;
  bool Delete(const std::string& thread_id) override;
  std::shared_ptr<IListIterator> GetByID(const std::string& thread_id) override;
  std::shared_ptr<IListIterator> GetForProcess(int32_t process_instance_id) override;
  int32_t GetCurrentState(const std::string& thread_id) override;
  bool ChangeState(const std::string& thread_id, int32_t value, bool add) override;
  std::shared_ptr<IListIterator> Load(const std::string& filter) override;
};

}  // namespace orvmysql
