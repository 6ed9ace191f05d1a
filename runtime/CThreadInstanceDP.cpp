#include "runtime/CThreadInstanceDP.h"

namespace orvmysql {

namespace {

using dp::As;

constexpr As kLayout[] = {
    As::Long,  // 0 FKProcInstanceID
    As::Long,  // 1 State
};

constexpr dp::Assignment kSet[] = {
    {"FKProcInstanceID = ", 0},
    {" ,`State` = ", 1},
};

constexpr dp::KeyedTable kTable{
    .locations = {.add = "CThreadInstanceDP: IThreadInstanceDP_Add Function (",
                  .update = "CThreadInstanceDP: IThreadInstanceDP_Update Function (",
                  .remove = "CThreadInstanceDP: IThreadInstanceDP_Delete Function (",
                  .by_key = "CThreadInstanceDP:IThreadInstanceDP_GetByID Function (",
                  .by_owner = "CThreadInstanceDP:IThreadInstanceDP_GetForProcess Function (",
                  .load = "CThreadInstanceDP:IThreadInstanceDP_Load Function (",
                  .current_state = "CThreadInstanceDP:IThreadInstanceDP_GetCurrentState Function (",
                  .change_state = "CThreadInstanceDP: IThreadInstanceDP_ChangeState Function ("},
    .connection_on_91 = true,
    .select = "SELECT ThreadID,FKProcInstanceID,State FROM tblProcThreadInstance ",
    .by_key = " WHERE ThreadID = ",
    .by_owner = " WHERE FKProcInstanceID = ",
    .insert_head = "INSERT INTO tblProcThreadInstance (ThreadID,FKProcInstanceID,`State`) VALUES (",
    .add_layout = kLayout,
    .update_head = "UPDATE tblProcThreadInstance SET ",
    .update_layout = kLayout,
    .update_set = kSet,
    .update_where = " WHERE ThreadID = ",
    .delete_one = "DELETE FROM tblProcThreadInstance WHERE ThreadID = ",
    .state_read = "SELECT State FROM tblProcThreadInstance WHERE ThreadID = ",
    .state_set = "UPDATE tblProcThreadInstance SET `State` = ",
    .state_add = "UPDATE tblProcThreadInstance SET `State` = `State` + ",
};

}  // namespace

// IThreadInstanceDP

bool CThreadInstanceDP::Add(const std::string& thread_id, const FieldArray& fields) {
  return AddRowWithKey(kTable, dp::Key::Text(thread_id), fields);
}

bool CThreadInstanceDP::Update(const std::string& thread_id, const FieldArray& fields) {
  return UpdateRow(kTable, dp::Key::Text(thread_id), fields) > 0;
}

bool CThreadInstanceDP::Delete(const std::string& thread_id) {
  DeleteRows(kTable, dp::Key::Text(thread_id), 0);
  return true;
}

std::shared_ptr<IListIterator> CThreadInstanceDP::GetByID(const std::string& thread_id) {
  return RowsByKey(kTable, dp::Key::Text(thread_id));
}

std::shared_ptr<IListIterator> CThreadInstanceDP::GetForProcess(int32_t process_instance_id) {
  return RowsByOwner(kTable, process_instance_id);
}

int32_t CThreadInstanceDP::GetCurrentState(const std::string& thread_id) {
  return CurrentState(kTable, dp::Key::Text(thread_id));
}

bool CThreadInstanceDP::ChangeState(const std::string& thread_id, int32_t value, bool add) {
  return ChangeStateWord(kTable, dp::Key::Text(thread_id), value, add);
}

std::shared_ptr<IListIterator> CThreadInstanceDP::Load(const std::string& filter) {
  return RowsLoad(kTable, filter);
}

}  // namespace orvmysql
