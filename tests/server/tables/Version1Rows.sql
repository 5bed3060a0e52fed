-- Changes up to 40 are trimmed: all of group 1 and view 10. View 13 is deleted. Group 2 and view 2 have one number.
INSERT INTO users VALUES (1,'ann','-',5), (2,'bob','-',0), (3,'cid','-',0);
INSERT INTO groups VALUES (1,'Open',-1,-1,0,1), (2,'Own',-1,1,1,1);
INSERT INTO documents VALUES (1,',"PlanPages":[]'), (3,''),
  (2,',"PlanPages":[{"SpliteType":4}],"ChangeNumber":"theirs","Ratio":0.25,"Extra":{"ChangeNumber":"ä"}');
INSERT INTO views VALUES (2,'g2','plain',-1,1,1,-1,-1,3), (10,'g10','old',1,-1,1,0,10,1),
                         (11,'g11','shared "s"',2,1,1,1,30,2);
INSERT INTO shares VALUES (11,2);
INSERT INTO default_views VALUES (2,1,11);
INSERT INTO changes VALUES
  (41,1,2,0,1,'','1','{"ID":2,"Name":"Own"','',0),
  (42,2,11,0,1,'','1','{"ID":11,"Name":"first","ViewGroupID":2','',2),
  (43,2,2,0,1,'','1','{"ID":2,"Name":"plain"','',3),
  (44,2,11,0,0,'1','1,2','{"ID":11,"Name":"first","ViewGroupID":2','{"ID":11,"Name":"first","SharedUserID":1',2),
  (45,2,13,0,1,'*','','','',0),
  (46,2,11,0,1,'1,2','1,2','{"ID":11,"Name":"shared \"s\"","ViewGroupID":2',
   '{"ID":11,"Name":"shared \"s\"","SharedUserID":1',2);
