// Mailboxes for the stand-in for Outlook.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace postmarker::test {

// A folder for items of a type: 0 mail, 1 appointments, 2 contacts.
inline nlohmann::json OutlookFolderJson(const std::string& id, const std::string& name,
                                        int type = 0,
                                        const nlohmann::json& folders = nlohmann::json::array()) {
  return {{"id", id},
          {"name", name},
          {"type", type},
          {"folders", folders},
          {"items", nlohmann::json::array()}};
}

inline nlohmann::json OutlookMail(const nlohmann::json& recipients) {
  return {{"class", 43}, {"to", recipients}};
}
inline nlohmann::json OutlookContact(const std::string& email) {
  return {{"class", 40}, {"email", email}};
}

// Three stores: the default one with folders of several types, mail and contacts; one with a sent
// folder of its own; one without.
inline nlohmann::json OutlookMailbox() {
  using nlohmann::json;
  json sent = OutlookFolderJson("B3", "Sent Items");
  sent["items"] = {OutlookMail({"Ann@x.example", "/o=org/ou=first/cn=recipients/cn=jdoe"}),
                   {{"class", 53}, {"to", json::array({"meeting@x.example"})}},
                   OutlookMail({"/o=org/cn=recipients/cn=Ben@x.example", ""})};
  json contacts =
      OutlookFolderJson("B5", "Contacts", 2, json::array({OutlookFolderJson("B51", "Hidden")}));
  contacts["items"] = {OutlookContact("Carl@x.example"),
                       {{"class", 69}, {"email", "list@x.example"}},
                       {{"class", 40}, {"email", "dora@x.example"}, {"named", false}},
                       OutlookContact("")};
  const json root = OutlookFolderJson(
      "B0", "Personal Folders", 0,
      {OutlookFolderJson("B4", "Inbox", 0,
                         json::array({OutlookFolderJson("B41",
                                                        "Gr\xC3\xBC\xC3\x9F"
                                                        "e")})),
       OutlookFolderJson("B2", "Deleted Items"), sent, contacts,
       OutlookFolderJson("B6", "Calendar", 1,
                         json::array({OutlookFolderJson("B61", "Mail in a calendar")}))});
  json archiveSent = OutlookFolderJson("C3", "Sent");
  archiveSent["items"] = {OutlookMail({"eve@x.example", "ann@x.example"})};
  return {{"version", "12.0.4518.1014"},
          {"stores",
           {{{"id", "A1"},
             {"default", true},
             {"sent", "B3"},
             {"defaults", {{"3", "B2"}, {"5", "B3"}, {"6", "B4"}, {"10", "B5"}}},
             {"root", root}},
            {{"id", "A3"},
             {"root", OutlookFolderJson("D0", "Public", 0,
                                        json::array({OutlookFolderJson("D1", "News")}))}},
            {{"id", "A2"},
             {"sent", "C3"},
             {"root", OutlookFolderJson("C0", "Archive", 0, json::array({archiveSent}))}}}}};
}

// So many sent messages with an Exchange and an SMTP recipient each, and so many contacts.
inline nlohmann::json LargeOutlookMailbox(int mails, int contacts) {
  using nlohmann::json;
  json mailbox = OutlookMailbox();
  json& folders = mailbox["stores"][0]["root"]["folders"];
  json& sent = folders[2]["items"];
  json& book = folders[3]["items"];
  sent = json::array();
  book = json::array();
  for (int i = 0; i < mails; ++i) {
    const std::string number = std::to_string(i);
    sent.push_back(OutlookMail(
        {"/o=org/ou=first/cn=recipients/cn=user" + number, "Mail" + number + "@x.example"}));
  }
  for (int i = 0; i < contacts; ++i) {
    book.push_back(OutlookContact("contact" + std::to_string(i) + "@x.example"));
  }
  return mailbox;
}

}  // namespace postmarker::test
