# Every test program, in the order of the folders under src/.
varnok_test(NAME contact_store_contract SOURCES contract/contact_store_contract_test.cpp
  DEPENDS varnok::platform_linux_sqlite LABELS threads)
varnok_test(NAME turbo_image_codec
  SOURCES platform/linux/imaging/picture_maker.cpp platform/linux/imaging/turbo_image_codec_test.cpp
  DEPENDS varnok::platform_linux_imaging JPEG::JPEG PNG::PNG ZLIB::ZLIB LABELS threads)
varnok_test(NAME vcard_reader SOURCES import/vcard_reader_test.cpp DEPENDS varnok::import)
varnok_test(NAME texts
  SOURCES platform/text_catalog_test.cpp platform/linux/text/icu_date_formatter_test.cpp
          platform/linux/text/icu_text_codec_test.cpp platform/linux/text/icu_text_collation_test.cpp
          platform/linux/text/mo_file_test.cpp
          platform/linux/text/mo_text_catalog_test.cpp platform/linux/text/plural_rule_test.cpp
  DEPENDS varnok::platform_linux_text varnok::backup_files)
target_compile_definitions(texts_test PRIVATE VARNOK_TEXTS_DIR="${VARNOK_TEXTS_DIR}")
add_dependencies(texts_test varnok_texts)
varnok_test(NAME export SOURCES export/csv_exporter_test.cpp export/html_exporter_test.cpp export/vcf_exporter_test.cpp
  DEPENDS varnok::export Boost::json)
varnok_test(NAME csv_languages SOURCES export/csv_languages_test.cpp DEPENDS varnok::export varnok::platform_linux_text)
varnok_test(NAME zip_cards SOURCES export/zip_cards_test.cpp
  DEPENDS varnok::export varnok::platform_linux_text ZLIB::ZLIB)
varnok_test(NAME backup_files SOURCES backup/files/vnk_util_test.cpp DEPENDS varnok::backup_files)
varnok_test(NAME zip_archive SOURCES backup/files/zip_archive_test.cpp
  DEPENDS varnok::backup_files varnok::platform_linux_posix ZLIB::ZLIB LABELS threads)
varnok_test(NAME application
  SOURCES app/preferences/preference_keys_test.cpp app/startup/varnok_app_delegate_test.cpp
          backup/run/varnok_view_controller_test.cpp
  DEPENDS varnok::app_startup ZLIB::ZLIB)
varnok_test(NAME backup_run SOURCES platform/linux/imaging/picture_maker.cpp backup/run/backup_run_test.cpp
  DEPENDS varnok::backup_run varnok::platform_linux_imaging varnok::platform_linux_posix varnok::platform_linux_text
          JPEG::JPEG PNG::PNG ZLIB::ZLIB
  LABELS threads)
target_compile_definitions(backup_run_test PRIVATE VARNOK_TEXTS_DIR="${VARNOK_TEXTS_DIR}")
add_dependencies(backup_run_test varnok_texts)
varnok_test(NAME preference_store SOURCES platform/preference_store_test.cpp DEPENDS varnok::platform)
varnok_test(NAME platform_linux_posix
  SOURCES platform/linux/posix/log_services_test.cpp platform/linux/posix/posix_clock_test.cpp
          platform/linux/posix/posix_file_system_test.cpp platform/linux/posix/preference_file_store_test.cpp
  DEPENDS varnok::platform_linux_posix)
varnok_test(NAME platform_linux_device SOURCES platform/linux/device/linux_device_test.cpp
  DEPENDS varnok::platform_linux_device)
varnok_test(NAME thread_task_runner SOURCES platform/linux/posix/thread_task_runner_test.cpp
  DEPENDS varnok::platform_linux_posix LABELS threads)
varnok_test(NAME platform_linux_mail
  SOURCES platform/linux/mail/mime_message_test.cpp platform/linux/mail/sendmail_mail_composer_test.cpp
  DEPENDS varnok::platform_linux_mail varnok::platform_linux_posix)
target_compile_definitions(platform_linux_mail_test PRIVATE
  VARNOK_MAIL_TEST_DIR="${CMAKE_CURRENT_SOURCE_DIR}/platform/linux/mail")
varnok_test(NAME cleanup
  SOURCES cleanup/duplicate_finder_test.cpp cleanup/duplicate_key_test.cpp cleanup/remove_records_test.cpp
  DEPENDS varnok::cleanup varnok::platform_linux_text)
varnok_test(NAME duplicate_screens SOURCES cleanup/duplicate_screens_test.cpp
  DEPENDS varnok::cleanup varnok::platform_linux_posix varnok::platform_linux_sqlite varnok::platform_linux_text
  LABELS threads)
varnok_test(NAME engagement SOURCES engagement/corvel_rating_test.cpp DEPENDS varnok::engagement)
varnok_test(NAME settings_fields
  SOURCES settings/fields/export_type_configuration_view_controller_test.cpp
          settings/fields/export_type_view_controller_test.cpp
  DEPENDS varnok::settings_fields)
varnok_test(NAME prepared_photos SOURCES export/prepared_photos_test.cpp
  DEPENDS varnok::export varnok::platform_linux_posix LABELS threads)
varnok_test(NAME platform_linux_network SOURCES platform/linux/network/netlink_network_monitor_test.cpp
  DEPENDS varnok::platform_linux_network LABELS threads)
varnok_test(NAME web_access
  SOURCES web/access/address_book_editor_test.cpp web/access/my_http_connection_test.cpp web/access/upload_test.cpp
          web/access/web_access_test.cpp
  DEPENDS varnok::web_access varnok::platform_linux_posix LABELS threads)
varnok_test(NAME settings_reminders SOURCES settings/reminders/reminder_schedule_test.cpp
  DEPENDS varnok::settings_reminders)
varnok_test(NAME platform_linux_desktop
  SOURCES platform/linux/desktop/desktop_notification_scheduler_test.cpp
          platform/linux/desktop/file_notification_scheduler_test.cpp platform/linux/desktop/reminder_units_test.cpp
          platform/linux/desktop/xdg_document_hand_over_test.cpp
  DEPENDS varnok::platform_linux_desktop varnok::platform_linux_posix)
varnok_test(NAME backup_list SOURCES backup/list/restore_backup_view_controller_test.cpp DEPENDS varnok::app_startup)
varnok_test(NAME settings_screen SOURCES settings/screen/varnok_settings_view_controller_test.cpp
  DEPENDS varnok::app_startup)
varnok_test(NAME dropbox
  SOURCES backup/dropbox/dropbox_browser_view_controller_test.cpp platform/linux/curl/dropbox_sign_in_test.cpp
          platform/linux/tokens/keyring_test.cpp
  DEPENDS varnok::backup_dropbox varnok::platform_linux_curl)
varnok_test(NAME web_http
  SOURCES web/http/http_exchange_test.cpp web/http/http_parts_test.cpp web/http/http_request_parser_test.cpp
  DEPENDS varnok::web_http)
varnok_test(NAME web_http_server SOURCES web/http/http_answers_test.cpp web/http/http_server_test.cpp
  DEPENDS varnok::web_http varnok::platform_linux_posix LABELS threads)
varnok_test(NAME single_instance SOURCES platform/linux/dbus/single_instance_test.cpp
  DEPENDS varnok::platform_linux_dbus varnok::platform_linux_mail varnok::platform_linux_posix)
varnok_test(NAME platform_linux_eds
  SOURCES platform/linux/eds/card_test.cpp platform/linux/eds/eds_contact_store_test.cpp
  DEPENDS varnok::platform_linux_eds varnok::platform_linux_posix varnok::platform_linux_text)
if(TARGET varnok_eds)
  # One program over the real service, which is started for it alone.
  add_executable(eds_service_test platform/linux/eds/eds_service_test.cpp)
  target_link_libraries(eds_service_test PRIVATE varnok_test_support varnok_flags
    varnok::platform_linux_eds varnok::platform_linux_posix varnok::platform_linux_text)
  set(run_with_bus ${CMAKE_CURRENT_SOURCE_DIR}/support/with_private_bus.sh $<TARGET_FILE:eds_service_test>)
  add_test(NAME EdsService COMMAND ${run_with_bus} --gtest_filter=-AnEdsServiceThatEnds.*)
  # The libraries forget things when their service ends; to tell whose they are takes whole, slow call stacks.
  add_test(NAME AnEdsServiceThatEnds COMMAND ${run_with_bus} --gtest_filter=AnEdsServiceThatEnds.*)
  set_tests_properties(EdsService AnEdsServiceThatEnds PROPERTIES TIMEOUT 600 ENVIRONMENT "TZ=UTC;LC_ALL=C.UTF-8")
  set_property(TEST AnEdsServiceThatEnds APPEND PROPERTY ENVIRONMENT
    "ASAN_OPTIONS=fast_unwind_on_malloc=0;LSAN_OPTIONS=suppressions=${CMAKE_CURRENT_SOURCE_DIR}/support/glib_leaks.supp")
endif()
