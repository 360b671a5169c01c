"""Writes down a mail message as another program's parser reads it.

Usage: read_message.py FILE
"""

import email
import email.policy
import sys

with open(sys.argv[1], "rb") as file:
    message = email.message_from_binary_file(file, policy=email.policy.default)

print("to:", [address.addr_spec for address in message["To"].addresses] if message["To"] else None)
print("from:", message["From"])
print("subject:", repr(str(message["Subject"])))
print("date:", message["Date"].datetime.isoformat())
print("headers:", sorted(message.keys()))
for part in message.iter_parts():
    content = part.get_payload(decode=True)
    print("part:", part.get_content_type(), part.get_content_charset(), repr(part.get_filename()))
    if part.get_filename() is None:
        print("  text:", repr(part.get_content()))
    else:
        print("  disposition:", part.get_content_disposition(), "name:", repr(part.get_param("name")))
        print("  bytes:", content)
for where, item in [("message", message)] + [("part", part) for part in message.iter_parts()]:
    for defect in item.defects:
        print("defect:", where, repr(defect))
