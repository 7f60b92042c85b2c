defined x
