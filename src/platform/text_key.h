// The keys of every text that a person reads, for TextCatalog. A key has its
// text in each resources/texts/*.po; the build fails when one lacks it. What
// each text is for and what its placeholders stand for is told in en.po.

#pragma once

#include <string_view>

namespace varnok::text_key {

// Words that several screens share.
inline constexpr std::string_view OK = "OK";
inline constexpr std::string_view Cancel = "Cancel";
inline constexpr std::string_view Close = "Close";
inline constexpr std::string_view YES = "YES";
inline constexpr std::string_view NO = "NO";
inline constexpr std::string_view Warning = "Warning";
inline constexpr std::string_view ALERTVIEWTITLE = "ALERTVIEWTITLE";
inline constexpr std::string_view LOADING = "LOADING";
inline constexpr std::string_view Varnok = "Varnok";

// Main screen.
inline constexpr std::string_view BACKUP_LABEL = "BACKUP_LABEL";
inline constexpr std::string_view FILE_SIZE_MESSAGE = "FILE_SIZE_MESSAGE";
inline constexpr std::string_view PRIVACY_ERROR = "PRIVACY_ERROR";
inline constexpr std::string_view NOCONTACT = "NOCONTACT";
inline constexpr std::string_view FIRSTBACKUPALERTMESSAGE = "FIRSTBACKUPALERTMESSAGE";
inline constexpr std::string_view EXPORT_SIZE_WARNING = "EXPORT_SIZE_WARNING";
inline constexpr std::string_view Upload = "Upload";

// A backup that cannot be made.
inline constexpr std::string_view BACKUP_FAILED = "BACKUP_FAILED";
inline constexpr std::string_view BACKUP_BUSY = "BACKUP_BUSY";
inline constexpr std::string_view CAUSE_NO_SPACE = "CAUSE_NO_SPACE";
inline constexpr std::string_view CAUSE_ACCESS_DENIED = "CAUSE_ACCESS_DENIED";
inline constexpr std::string_view CAUSE_NOT_FOUND = "CAUSE_NOT_FOUND";
inline constexpr std::string_view CAUSE_INPUT_OUTPUT = "CAUSE_INPUT_OUTPUT";
inline constexpr std::string_view CAUSE_CORRUPT = "CAUSE_CORRUPT";
inline constexpr std::string_view CAUSE_NEWER_VERSION = "CAUSE_NEWER_VERSION";
inline constexpr std::string_view CAUSE_BUSY = "CAUSE_BUSY";
inline constexpr std::string_view CAUSE_OTHER = "CAUSE_OTHER";

// Mail.
inline constexpr std::string_view BACKUP_MAIL_SUBJECT = "BACKUP_MAIL_SUBJECT";
inline constexpr std::string_view BACKUP_MAIL_BODY = "BACKUP_MAIL_BODY";
inline constexpr std::string_view EXPORT_MAIL_SUBJECT = "EXPORT_MAIL_SUBJECT";
inline constexpr std::string_view EXPORT_MAIL_BODY = "EXPORT_MAIL_BODY";
inline constexpr std::string_view EXPORT_MAIL_SUBJECT_ZIP = "EXPORT_MAIL_SUBJECT_ZIP";
inline constexpr std::string_view EXPORT_MAIL_BODY_ZIP = "EXPORT_MAIL_BODY_ZIP";
inline constexpr std::string_view EXPORT_INFO = "EXPORT_INFO";
inline constexpr std::string_view MAILCOMPOSER_CANT_SEND = "MAILCOMPOSER_CANT_SEND";

// List of backups.
inline constexpr std::string_view RESTORE_MESSAGE = "RESTORE_MESSAGE";
inline constexpr std::string_view EDIT_LIST = "EDIT_LIST";
inline constexpr std::string_view RESTORE = "RESTORE";
inline constexpr std::string_view LAST_BACKUP_ERROR_MESSAGE = "LAST_BACKUP_ERROR_MESSAGE";
inline constexpr std::string_view HAND_OVER_FAILED = "HAND_OVER_FAILED";
inline constexpr std::string_view BACKUP_UNREADABLE = "BACKUP_UNREADABLE";

// Dropbox.
inline constexpr std::string_view Dropbox = "Dropbox";
inline constexpr std::string_view CLOSE = "CLOSE";
inline constexpr std::string_view DROPBOX_WARNING_MESSAGE = "DROPBOX_WARNING_MESSAGE";
inline constexpr std::string_view Downloaded = "Downloaded";
inline constexpr std::string_view Uploaded = "Uploaded";

// Web pages.
inline constexpr std::string_view EDIT = "EDIT";
inline constexpr std::string_view SAVE = "SAVE";
inline constexpr std::string_view SEARCH = "SEARCH";
inline constexpr std::string_view SEARCHING = "SEARCHING";
inline constexpr std::string_view WRITE_SOMETHING = "WRITE_SOMETHING";
inline constexpr std::string_view ERROR = "ERROR";
inline constexpr std::string_view REMOVE = "REMOVE";
inline constexpr std::string_view REMOVING = "REMOVING";
inline constexpr std::string_view REMOVE_MSG = "REMOVE_MSG";
inline constexpr std::string_view NEW_RECORD = "NEW_RECORD";
inline constexpr std::string_view DOWNLOAD_INFO_01 = "DOWNLOAD_INFO_01";
inline constexpr std::string_view DOWNLOAD_INFO_03 = "DOWNLOAD_INFO_03";
inline constexpr std::string_view DOWNLOAD_INFO_04 = "DOWNLOAD_INFO_04";
inline constexpr std::string_view WIFI_UPLOAD_01 = "WIFI_UPLOAD_01";
inline constexpr std::string_view WIFI_UPLOAD_02 = "WIFI_UPLOAD_02";
inline constexpr std::string_view ACCESS_CODE = "ACCESS_CODE";
inline constexpr std::string_view ACCESS_CODE_INFO = "ACCESS_CODE_INFO";
inline constexpr std::string_view ACCESS_CODE_WRONG = "ACCESS_CODE_WRONG";
inline constexpr std::string_view ACCESS_CODE_WAIT = "ACCESS_CODE_WAIT";

// Contact fields: column titles of a CSV file and labels of the browser's form.
inline constexpr std::string_view Prefix = "Prefix";
inline constexpr std::string_view First_Name = "First Name";
inline constexpr std::string_view Middle_Name = "Middle Name";
inline constexpr std::string_view Last_Name = "Last Name";
inline constexpr std::string_view Suffix = "Suffix";
inline constexpr std::string_view Organization = "Organization";
inline constexpr std::string_view Department = "Department";
inline constexpr std::string_view Title = "Title";
inline constexpr std::string_view Nickname = "Nickname";
inline constexpr std::string_view Birthday = "Birthday";
inline constexpr std::string_view Anniversary = "Anniversary";
inline constexpr std::string_view Mobile = "Mobile";
inline constexpr std::string_view iPhone = "iPhone";
inline constexpr std::string_view Work = "Work";
inline constexpr std::string_view Home = "Home";
inline constexpr std::string_view Main = "Main";
inline constexpr std::string_view Home_Fax = "Home Fax";
inline constexpr std::string_view Work_Fax = "Work Fax";
inline constexpr std::string_view Pager = "Pager";
inline constexpr std::string_view Other = "Other";
inline constexpr std::string_view Email = "Email";
inline constexpr std::string_view Home_Page = "Home Page";
inline constexpr std::string_view Note = "Note";

// Settings screen.
inline constexpr std::string_view EXPORT = "EXPORT";
inline constexpr std::string_view TYPE = "TYPE";
inline constexpr std::string_view CONFIGURE = "CONFIGURE";
inline constexpr std::string_view RESTORE_VCF = "RESTORE_VCF";
inline constexpr std::string_view WI_FI_DOWNLOAD = "WI_FI_DOWNLOAD";
inline constexpr std::string_view WI_FI_SERVER = "WI_FI_SERVER";
inline constexpr std::string_view WI_FI_INFO = "WI_FI_INFO";
inline constexpr std::string_view WI_FI_INFO_NO_BACKUP = "WI_FI_INFO_NO_BACKUP";
inline constexpr std::string_view REMINDER = "REMINDER";
inline constexpr std::string_view EVERY = "EVERY";
inline constexpr std::string_view EXPORT_LAST = "EXPORT_LAST";
inline constexpr std::string_view ALERTVIEWMESSAGE = "ALERTVIEWMESSAGE";
inline constexpr std::string_view REMOVE_DUPLICATE = "REMOVE_DUPLICATE";
inline constexpr std::string_view File_Storage = "File Storage";
inline constexpr std::string_view Link_Dropbox = "Link Dropbox";
inline constexpr std::string_view Unlink = "Unlink";
inline constexpr std::string_view DROPBOX_INFO = "DROPBOX_INFO";
inline constexpr std::string_view REMOVE_RECORDS = "REMOVE_RECORDS";
inline constexpr std::string_view REMOVE_ALL = "REMOVE_ALL";
inline constexpr std::string_view ABOUT = "ABOUT";

// Format and fields of a backup.
inline constexpr std::string_view vcf = "vcf";
inline constexpr std::string_view csv = "csv";
inline constexpr std::string_view MULTIPLE_VCF = "MULTIPLE_VCF";
inline constexpr std::string_view MULTIPLE_VCF_INFO = "MULTIPLE_VCF_INFO";
inline constexpr std::string_view FIELDS = "FIELDS";
inline constexpr std::string_view EXPORT_CONF_PHONES = "EXPORT_CONF_PHONES";
inline constexpr std::string_view EXPORT_CONF_EMAILS = "EXPORT_CONF_EMAILS";
inline constexpr std::string_view EXPORT_CONF_URLS = "EXPORT_CONF_URLS";
inline constexpr std::string_view EXPORT_CONF_ADRS = "EXPORT_CONF_ADRS";
inline constexpr std::string_view EXPORT_CONF_DATES = "EXPORT_CONF_DATES";
inline constexpr std::string_view EXPORT_CONF_NOTES = "EXPORT_CONF_NOTES";
inline constexpr std::string_view Optimization = "Optimization";
inline constexpr std::string_view EXPORT_CONF_PHOTOS = "EXPORT_CONF_PHOTOS";
inline constexpr std::string_view EXPORT_CONF_SHRINK = "EXPORT_CONF_SHRINK";

// Reminder.
inline constexpr std::string_view WEEK = "WEEK";
inline constexpr std::string_view MONTH = "MONTH";
inline constexpr std::string_view REMINDER_MESSAGE = "REMINDER_MESSAGE";
inline constexpr std::string_view REMINDER_MESSAGE_FIRST = "REMINDER_MESSAGE_FIRST";
inline constexpr std::string_view REMINDER_FAILED = "REMINDER_FAILED";
inline constexpr std::string_view Backup = "Backup";

// Deleting contacts.
inline constexpr std::string_view DUPLICATE_RECORD_SEARCHING = "DUPLICATE_RECORD_SEARCHING";
inline constexpr std::string_view DUPLICATE_RECORD_NOT_FOUND = "DUPLICATE_RECORD_NOT_FOUND";
inline constexpr std::string_view REMOVE_DUPLICATE_INFO = "REMOVE_DUPLICATE_INFO";
inline constexpr std::string_view REMOVED = "REMOVED";
inline constexpr std::string_view SEGMENT_REMOVE_SELECTED = "SEGMENT_REMOVE_SELECTED";
inline constexpr std::string_view SEGMENT_REMOVE_ALL = "SEGMENT_REMOVE_ALL";
inline constexpr std::string_view REMOVE_SELECTED_MSG = "REMOVE_SELECTED_MSG";
inline constexpr std::string_view REMOVE_ALL_MSG = "REMOVE_ALL_MSG";
inline constexpr std::string_view REMOVE_ALL_INFO = "REMOVE_ALL_INFO";

// Buttons of several screens.
inline constexpr std::string_view DONE = "DONE";
inline constexpr std::string_view SEND = "SEND";
inline constexpr std::string_view SETTINGS = "SETTINGS";
inline constexpr std::string_view SUPPORT = "SUPPORT";
inline constexpr std::string_view CLEAR_DUPLICATES = "CLEAR_DUPLICATES";
inline constexpr std::string_view SCROLL_TOP = "SCROLL_TOP";

// Touch application.
inline constexpr std::string_view IMPORT_FILE = "IMPORT_FILE";
inline constexpr std::string_view IMPORTING = "IMPORTING";
inline constexpr std::string_view IMPORTED = "IMPORTED";
inline constexpr std::string_view IMPORT_SKIPPED = "IMPORT_SKIPPED";
inline constexpr std::string_view IMPORT_FAILED = "IMPORT_FAILED";
inline constexpr std::string_view FIRST_RUN_TITLE = "FIRST_RUN_TITLE";
inline constexpr std::string_view FIRST_RUN_INFO = "FIRST_RUN_INFO";
inline constexpr std::string_view NO_ACCESS_TITLE = "NO_ACCESS_TITLE";
inline constexpr std::string_view TRY_AGAIN = "TRY_AGAIN";
inline constexpr std::string_view CHOOSE_SETTING = "CHOOSE_SETTING";
inline constexpr std::string_view COPY_ADDRESS = "COPY_ADDRESS";
inline constexpr std::string_view ADDRESS_COPIED = "ADDRESS_COPIED";
inline constexpr std::string_view QR_CODE = "QR_CODE";
inline constexpr std::string_view SECTION_INDEX = "SECTION_INDEX";
inline constexpr std::string_view PERCENT = "PERCENT";
inline constexpr std::string_view CHOOSE_BOOK = "CHOOSE_BOOK";
inline constexpr std::string_view OWN_BOOK = "OWN_BOOK";
inline constexpr std::string_view NO_NAME = "NO_NAME";
inline constexpr std::string_view MAIL_TO = "MAIL_TO";
inline constexpr std::string_view MAIL_TO_HINT = "MAIL_TO_HINT";

}  // namespace varnok::text_key
