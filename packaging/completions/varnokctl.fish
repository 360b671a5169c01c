# Completion of varnokctl for fish.

set -l commands import contacts duplicates stores backup backups serve reminder dropbox settings shell

function __varnokctl_backups
    varnokctl --quiet --json backups --all 2>/dev/null | string match -ra '"name":"[^"]*"' | string split -f4 '"'
end

function __varnokctl_settings
    varnokctl settings 2>/dev/null | string split -f1 ' '
end

complete -c varnokctl -f
complete -c varnokctl -l home -xa '(__fish_complete_directories)' -d 'keep everything under this folder'
complete -c varnokctl -l store -xa 'sqlite eds' -d 'which contact store'
complete -c varnokctl -l language -xa 'en de es fr it tr el he' -d 'preferred languages'
complete -c varnokctl -l set -xa '(__varnokctl_settings)=' -d 'a preference for this run only'
complete -c varnokctl -l json -d 'one JSON document on stdout'
complete -c varnokctl -l quiet -d 'no progress and no notices'
complete -c varnokctl -s h -l help -d 'what there is'
complete -c varnokctl -l version -d 'the version'

set -l none "not __fish_seen_subcommand_from $commands"
complete -c varnokctl -n $none -a import -d 'add the people of vCard files'
complete -c varnokctl -n $none -a contacts -d 'list people'
complete -c varnokctl -n $none -a duplicates -d 'list people who are stored more than once'
complete -c varnokctl -n $none -a stores -d 'list the contact stores'
complete -c varnokctl -n $none -a backup -d 'make one backup'
complete -c varnokctl -n $none -a backups -d 'list the backups'
complete -c varnokctl -n $none -a serve -d 'the web access, until interrupted'
complete -c varnokctl -n $none -a reminder -d 'the planned reminder'
complete -c varnokctl -n $none -a dropbox -d 'the linked Dropbox account'
complete -c varnokctl -n $none -a settings -d 'every preference with its value'
complete -c varnokctl -n $none -a shell -d 'the screens of the application on this terminal'

complete -c varnokctl -n '__fish_seen_subcommand_from import' -Fka '(__fish_complete_suffix .vcf)'

complete -c varnokctl -n '__fish_seen_subcommand_from contacts; and not __fish_seen_subcommand_from show remove' -a show -d 'every stored property of one person'
complete -c varnokctl -n '__fish_seen_subcommand_from contacts; and not __fish_seen_subcommand_from show remove' -a remove -d 'delete people'
complete -c varnokctl -n '__fish_seen_subcommand_from contacts; and __fish_seen_subcommand_from remove' -l all -d everybody
complete -c varnokctl -n '__fish_seen_subcommand_from contacts; and __fish_seen_subcommand_from remove' -l yes -d 'answers the question'

complete -c varnokctl -n '__fish_seen_subcommand_from duplicates' -l remove -d 'delete all but the first'
complete -c varnokctl -n '__fish_seen_subcommand_from duplicates' -l yes -d 'answers the question'

complete -c varnokctl -n '__fish_seen_subcommand_from backup' -l type -xa 'vcf csv' -d 'its format'
complete -c varnokctl -n '__fish_seen_subcommand_from backup' -l multiple -d 'one vCard file per person, in a zip archive'
complete -c varnokctl -n '__fish_seen_subcommand_from backup' -l single -d 'one vCard file'

set -l backups '__fish_seen_subcommand_from backups; and not __fish_seen_subcommand_from mail upload open delete'
complete -c varnokctl -n $backups -a mail -d 'send a backup'
complete -c varnokctl -n $backups -a upload -d 'copy one to Dropbox'
complete -c varnokctl -n $backups -a open -d 'hand one to another application'
complete -c varnokctl -n $backups -a delete -d 'delete one'
complete -c varnokctl -n $backups -l all -d 'CSV and zip too'
complete -c varnokctl -n '__fish_seen_subcommand_from mail upload open delete' -a '(__varnokctl_backups)'
complete -c varnokctl -n '__fish_seen_subcommand_from mail' -l to -x -d address

complete -c varnokctl -n '__fish_seen_subcommand_from serve' -l port -x -d 'where it listens'
complete -c varnokctl -n '__fish_seen_subcommand_from serve' -l bind -xa '(__fish_print_interfaces)' -d 'the one interface'
complete -c varnokctl -n '__fish_seen_subcommand_from serve' -l access-code -d 'ask browsers for a code'
complete -c varnokctl -n '__fish_seen_subcommand_from serve' -l read-only -d 'refuse every change'
complete -c varnokctl -n '__fish_seen_subcommand_from serve' -l host-name -xa '(__fish_print_hostnames)' -d 'a further name'
complete -c varnokctl -n '__fish_seen_subcommand_from serve' -l request-log -d 'one line for each request'

complete -c varnokctl -n '__fish_seen_subcommand_from reminder' -a schedule -d 'plan it afresh'
complete -c varnokctl -n '__fish_seen_subcommand_from reminder' -a deliver -d 'show it now'
complete -c varnokctl -n '__fish_seen_subcommand_from deliver' -l if-due -d 'only when its time has come'
complete -c varnokctl -n '__fish_seen_subcommand_from deliver' -l wait -d 'stay until it is answered'

set -l dropbox '__fish_seen_subcommand_from dropbox; and not __fish_seen_subcommand_from link unlink list get put'
complete -c varnokctl -n $dropbox -a link -d 'link an account'
complete -c varnokctl -n $dropbox -a unlink -d 'forget the account'
complete -c varnokctl -n $dropbox -a list -d 'the entries of a folder'
complete -c varnokctl -n $dropbox -a get -d 'download a file'
complete -c varnokctl -n $dropbox -a put -d 'upload a backup'
complete -c varnokctl -n '__fish_seen_subcommand_from dropbox; and __fish_seen_subcommand_from put' -a '(__varnokctl_backups)'

set -l settings '__fish_seen_subcommand_from settings; and not __fish_seen_subcommand_from get set reset'
complete -c varnokctl -n $settings -a get -d 'read one'
complete -c varnokctl -n $settings -a set -d 'write one'
complete -c varnokctl -n $settings -a reset -d 'forget the stored value of one'
complete -c varnokctl -n '__fish_seen_subcommand_from settings; and __fish_seen_subcommand_from get set reset' -a '(__varnokctl_settings)'
